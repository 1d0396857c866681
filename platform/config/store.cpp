#include "store.hpp"

#include <cstdio>

int cfg::fail(cfg_code code, const char *format, ...) {
  char text[1024];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);
  error = code;
  try {
    error_text = text;
  } catch (const std::bad_alloc &) {
    error_text.clear();
  }
  return 0;
}

bool cfg::take_snapshot() {
  twcfg::Failure failure;
  snapshot = engine->snapshot(failure);
  if (snapshot == nullptr) return fail(failure) != 0;
  ++generation;
  return true;
}

bool cfg::refuse_changes() { return fail(CFG_E_READ_ONLY, "the store was opened for reading only") != 0; }

twcfg::Edit &cfg::editing() {
  if (edit == nullptr) edit = new_edit();
  return *edit;
}

std::unique_ptr<twcfg::Edit> cfg::new_edit() {
  return std::make_unique<twcfg::Edit>(born.size(), ++edits, names);
}

void cfg::drop_edit(bool written) {
  if (edit == nullptr) return;
  for (std::size_t i = edit->first_born; i < born.size(); ++i) {
    twcfg::Head *head = born[i];
    head->node = nullptr;
    ++head->own_epoch;
    head->committed = written && head->parent != nullptr;
  }
  edit.reset();
  ++generation;
}

void cfg::drop_results() {
  for (const auto &result : results) {
    result->entries.clear();
    if (!result->idle) idle_results.push_back(result.get());
    result->idle = true;
  }
}

void cfg::move_to(std::unique_ptr<twcfg::Snapshot> newer) {
  snapshot = std::move(newer);
  ++generation;
}
