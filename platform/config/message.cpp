#include "message.hpp"

#include <array>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <exception>

namespace {

constexpr int32_t kMaxArguments = 1024;

void free_arguments(int32_t argc, char **args) noexcept {
  if (!args) return;
  for (int32_t i = 0; i < argc; ++i) free(args[i]);
  free(args);
}

// A heap copy of the arguments, as cfg_new_message() takes it; NULL when memory runs out.
char **copy_arguments(std::initializer_list<const char *> arguments) noexcept {
  auto **copy = static_cast<char **>(calloc(arguments.size() + 1, sizeof(char *)));
  if (!copy) return nullptr;
  int32_t count = 0;
  for (const char *argument : arguments) {
    copy[count] = strdup(argument);
    if (!copy[count++]) {
      free_arguments(count, copy);
      return nullptr;
    }
  }
  return copy;
}

std::string in_words(const cfg_message &message) {
  const auto argument = [&](int32_t index) {
    const char *text = cfg_message_get_arg(&message, index);
    return std::string(text ? text : "(none)");
  };
  switch (message.code) {
    case CFG_MESSAGE_UNEXPECTED:
      return message.argc == 2 ? "Unexpected failure at " + argument(0) + ":" + argument(1)
                               : "Unexpected failure";
    case CFG_MESSAGE_BAD_KEY:
      return "The supplied private key could not be read";
    case CFG_MESSAGE_CSR_GENERATE_FAILED:
      return "The certificate request could not be generated";
    default:
      break;
  }
  std::string text = "Message " + std::to_string(message.code);
  for (int32_t i = 0; i < message.argc; ++i) text += (i == 0 ? ": " : ", ") + argument(i);
  return text;
}

}  // namespace

cfg_message::~cfg_message() { free_arguments(argc, args); }

cfg_message *cfg_new_message(int32_t code, int32_t argc, char **args) noexcept {
  if (argc < 0 || argc > kMaxArguments || (argc > 0 && !args)) {
    free_arguments(argc, args);
    return nullptr;
  }
  cfg_message *message = new (std::nothrow) cfg_message(code, argc, args);
  if (!message) {
    free_arguments(argc, args);
    return nullptr;
  }
  try {
    message->text = in_words(*message);
    return message;
  } catch (const std::exception &) {
    delete message;
    return nullptr;
  }
}

void cfg_message_free(cfg_message *message) noexcept { delete message; }

int32_t cfg_message_get_code(const cfg_message *message) noexcept { return message ? message->code : 0; }

int32_t cfg_message_get_argc(const cfg_message *message) noexcept { return message ? message->argc : 0; }

const char *cfg_message_get_arg(const cfg_message *message, int32_t index) noexcept {
  return message && index >= 0 && index < message->argc ? message->args[index] : nullptr;
}

const char *cfg_message_get_text(const cfg_message *message) noexcept {
  return message ? message->text.c_str() : nullptr;
}

namespace twcfg {

bool MessageList::add_unexpected(const char *file, int32_t line) noexcept {
  if (!file) return false;
  std::array<char, 16> number{};
  std::to_chars(number.begin(), number.end() - 1, line);
  return add(CFG_MESSAGE_UNEXPECTED, {file, number.data()});
}

const cfg_message *MessageList::at(int32_t index) const noexcept {
  return index >= 0 && index < size() ? messages_[static_cast<std::size_t>(index)].get() : nullptr;
}

bool MessageList::add(int32_t code, std::initializer_list<const char *> arguments) noexcept {
  if (messages_.size() >= kMax) return false;
  char **copy = copy_arguments(arguments);
  if (!copy) return false;
  std::unique_ptr<cfg_message> message(cfg_new_message(code, static_cast<int32_t>(arguments.size()), copy));
  if (!message) return false;
  try {
    messages_.push_back(std::move(message));
    return true;
  } catch (const std::exception &) {
    return false;
  }
}

}  // namespace twcfg
