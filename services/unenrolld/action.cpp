#include "action.hpp"

#include <fmt/format.h>

#include <cerrno>
#include <system_error>

#include "log.hpp"

namespace unenrolld {
namespace {

using action_record = std::unique_ptr<twaction, decltype(&twaction_free)>;

// 0 or a negative errno number.
int fetch(const std::string &node, action_record &out) {
  twaction *found = nullptr;
  const int result = twaction_get_for_node(node.c_str(), kQueue, &found);
  out.reset(found);
  return result;
}

std::int32_t state_after(outcome::kind how) {
  switch (how) {
    case outcome::kind::done:
      return TWACTION_DONE;
    case outcome::kind::nothing_to_do:
      return TWACTION_NOTHING_TO_DO;
    case outcome::kind::not_now:
      return TWACTION_RETRYING;
    case outcome::kind::never:
      break;
  }
  return TWACTION_FAILED;
}

}  // namespace

void action::begin() { change(TWACTION_TAKEN, ""); }
void action::end(const outcome &result) { change(state_after(result.how), result.error); }

int action::try_to_change(std::int32_t state, const std::string &error) const {
  action_record record(nullptr, twaction_free);
  int result = fetch(node_, record);
  if (result == 0) result = twaction_set_state(record.get(), state);
  if (result == 0) result = twaction_set_last_error(record.get(), error.c_str());
  return result == 0 ? twaction_store(record.get()) : result;
}

void action::change(std::int32_t state, const std::string &error) {
  constexpr int kAttempts = 10;
  int result = -ESTALE;  // someone has stored it since it was fetched: the newer one counts
  for (int i = 0; i < kAttempts && result == -ESTALE; ++i) result = try_to_change(state, error);
  if (result == 0) return;
  log(level::warning, fmt::format("the action of {} cannot be set to state {}: {}", node_, state,
                                  std::generic_category().message(-result)));
}

}  // namespace unenrolld
