// Messages and the list of them that an edit carries.
#pragma once

#include <twconfig/message.h>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

struct cfg_message {
  cfg_message(int32_t message_code, int32_t argument_count, char **arguments) noexcept
      : code(message_code), argc(argument_count), args(arguments) {}
  ~cfg_message();
  cfg_message(const cfg_message &) = delete;
  cfg_message &operator=(const cfg_message &) = delete;

  int32_t code;
  int32_t argc;
  char **args;  // owned, with its strings; entries may be NULL
  std::string text;
};

namespace twcfg {

// The messages of one edit, oldest first. Adding fails (false) for no memory, a NULL file, and when there are
// kMax messages: an edit that goes wrong in a loop must not fill the memory, and its first message tells why.
class MessageList {
 public:
  static constexpr std::size_t kMax = 1024;

  bool add_unexpected(const char *file, int32_t line) noexcept;
  bool add_bad_key() noexcept { return add(CFG_MESSAGE_BAD_KEY, {}); }
  bool add_csr_generate_failed() noexcept { return add(CFG_MESSAGE_CSR_GENERATE_FAILED, {}); }
  void clear() noexcept { messages_.clear(); }

  int32_t size() const noexcept { return static_cast<int32_t>(messages_.size()); }
  // NULL outside the list.
  const cfg_message *at(int32_t index) const noexcept;
  // NULL when there is no message.
  const char *first_text() const noexcept { return cfg_message_get_text(at(0)); }

 private:
  bool add(int32_t code, std::initializer_list<const char *> arguments) noexcept;

  std::vector<std::unique_ptr<cfg_message>> messages_;
};

}  // namespace twcfg
