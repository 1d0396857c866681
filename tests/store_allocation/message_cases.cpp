#include <cstdlib>
#include <cstring>

#include "store_allocation/cases.hpp"

namespace store_allocation {
namespace {

constexpr char kLong[] = "a text that is too long for the space within a string object";

char **one_argument() {
  auto **args = static_cast<char **>(std::calloc(1, sizeof(char *)));
  args[0] = strdup(kLong);
  return args;
}

// A message that cannot be made releases its arguments all the same.
void make(EngineKind) {
  EXPECT_GT(plain_sweep([] {
              char **args = one_argument();
              cfg_message *message = with_refusals([&] { return cfg_new_message(4711, 1, args); });
              const bool made = message != nullptr;
              if (made) EXPECT_STREQ(cfg_message_get_arg(message, 0), kLong);
              cfg_message_free(message);
              return made;
            }),
            0);
}

void read(EngineKind) {
  cfg_message *message = cfg_new_message(4711, 1, one_argument());
  ASSERT_NE(message, nullptr);
  const std::string text = cfg_message_get_text(message);
  EXPECT_EQ(plain_sweep([&] {
              return with_refusals([&] {
                return cfg_message_get_code(message) == 4711 && cfg_message_get_argc(message) == 1 &&
                       std::strcmp(cfg_message_get_arg(message, 0), kLong) == 0 &&
                       std::strcmp(cfg_message_get_text(message), text.c_str()) == 0;
              });
            }),
            0);
  cfg_message_free(message);
}

void release(EngineKind) {
  EXPECT_EQ(plain_sweep([] {
              cfg_message *message = cfg_new_message(4711, 1, one_argument());
              with_refusals([&] {
                cfg_message_free(message);
                return 1;
              });
              return true;
            }),
            0);
}

template <class Add>
void add(EngineKind engine, const Add &call) {
  sweep(engine, call, done);
  sweep(engine, call, done, [&](World &w) { EXPECT_EQ(call(w), 1); });
}

void read_list(EngineKind engine) {
  sweep(
      engine,
      [](World &w) {
        const cfg_message *second = cfg_get_message(w.store, 1);
        return cfg_get_message_count(w.store) == 2 ? cfg_message_get_text(second) : nullptr;
      },
      id,
      [](World &w) {
        EXPECT_EQ(cfg_message_add_bad_key(w.store), 1);
        EXPECT_EQ(cfg_message_add_csr_generate_failed(w.store), 1);
      });
}

void first_text(EngineKind engine) {
  sweep(
      engine, [](World &w) { return cfg_get_first_message_string(w.store); }, id,
      [](World &w) { EXPECT_EQ(cfg_message_add_bad_key(w.store), 1); });
}

const Case rows[] = {
    {"cfg_get_first_message_string", first_text},
    {"cfg_get_message", read_list},
    {"cfg_get_message_count", read_list},
    {"cfg_message_add_bad_key",
     [](EngineKind e) { add(e, [](World &w) { return cfg_message_add_bad_key(w.store); }); }},
    {"cfg_message_add_csr_generate_failed",
     [](EngineKind e) { add(e, [](World &w) { return cfg_message_add_csr_generate_failed(w.store); }); }},
    {"cfg_message_add_unexpected",
     [](EngineKind e) {
       add(e, [](World &w) { return cfg_message_add_unexpected(w.store, "src/users", 120); });
     }},
    {"cfg_message_free", release, kPlain},
    {"cfg_message_get_arg", read, kPlain},
    {"cfg_message_get_argc", read, kPlain},
    {"cfg_message_get_code", read, kPlain},
    {"cfg_message_get_text", read, kPlain},
    {"cfg_new_message", make, kPlain},
};

}  // namespace

const std::span<const Case> message_cases = rows;

}  // namespace store_allocation
