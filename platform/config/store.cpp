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

bool cfg::reading() {
  if (!in_own_process()) return false;
  if (snapshot != nullptr) return true;
  twcfg::Failure failure;
  snapshot = engine->snapshot(failure);
  if (snapshot == nullptr) return fail(failure) != 0;
  ++generation;
  return true;
}

bool cfg::writing() {
  if (read_only) return fail(CFG_E_READ_ONLY, "the store was opened for reading only") != 0;
  return reading();
}

twcfg::Edit &cfg::editing() {
  if (edit == nullptr) edit = std::make_unique<twcfg::Edit>();
  return *edit;
}

void cfg::drop_edit() {
  if (edit == nullptr) return;
  for (twcfg::Head *head : edit->born) {
    head->node = nullptr;
    ++head->own_epoch;
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
