#include "allocation/cases.hpp"
#include "allocation/search_memory.hpp"

#include <unistd.h>

#include <cstdlib>
#include <memory>

#include "search_service/search_service.hpp"

namespace allocation {
namespace {

// Texts of up to 15 bytes: Jansson's reader drops a byte of a longer one when it finds no memory for it.
constexpr char kReply[] = R"({"result":true,"data":{"id":"result-7","count":2,"items":["nodes-1","nodes-2"],)"
                          R"("fields":["name","status"]}})";

void connect() {
  search_service::Scripted service(kReply);
  SearchMemory memory;
  sweep([](World &) { return twsearch_connect(); },
        [&](World &, int fd) {
          if (fd > 0) close(fd);
          memory.judge();
          return fd > 0;
        });
}

struct Array {
  int32_t result = 0, count = -77;
  char **strings = nullptr;
};

// Releases the strings of a success; nothing is there to release otherwise.
bool whole(Array got, int32_t success, const char *first) {
  if (got.result != success) {
    EXPECT_EQ(got.count, -77);
    EXPECT_EQ(got.strings, nullptr);
    return false;
  }
  EXPECT_EQ(got.count, 2);
  EXPECT_STREQ(got.strings[0], first);
  for (char **string = got.strings; *string; ++string) std::free(*string);
  std::free(static_cast<void *>(got.strings));
  return true;
}

void get_fields() {
  search_service::Scripted service(kReply);
  SearchMemory memory;
  sweep(
      [](World &) {
        Array got;
        got.result = twsearch_get_fields("nodes", &got.strings, &got.count);
        return got;
      },
      [&](World &, Array got) {
        memory.judge();
        return whole(got, 1, "name");
      });
}

void create() {
  search_service::Scripted service(kReply);
  SearchMemory memory;
  const std::unique_ptr<cfg_condition, void (*)(cfg_condition *)> condition(
      cfg_new_string_condition("name", CFG_OP_EQUAL, "n"), cfg_free_conditions);
  sweep([&](World &) { return twsearch_create("nodes", condition.get(), 1, "alice"); },
        [&](World &, char *id) {
          memory.judge();
          if (!id) return false;
          EXPECT_STREQ(id, "result-7");
          std::free(id);
          return true;
        });
  // Whatever was refused: what was asked in her name went out with her name.
  const std::string complete =
      R"({"method":"search","data":{"conditions":{"key":"name","op":"equal","string":"n"},"object":"nodes"},)"
      R"("secctxt":"alice","verb":1})";
  for (const std::string &message : service.messages())
    if (!search_service::is_hello(message)) EXPECT_EQ(message, complete);
}

void fetch() {
  search_service::Scripted service(kReply);
  SearchMemory memory;
  sweep(
      [](World &) {
        Array got;
        got.result = twsearch_fetch("r", 0, 0, &got.strings, &got.count, 1, "alice");
        return got;
      },
      [&](World &, Array got) {
        memory.judge();
        if (got.result != 2) EXPECT_TRUE(got.result == -1 || got.result == -2) << got.result;
        return whole(got, 2, "nodes-1");
      });
}

const Case rows[] = {
    {"twsearch_connect", connect},
    {"twsearch_create", create},
    {"twsearch_fetch", fetch},
    {"twsearch_get_fields", get_fields},
};

}  // namespace

const std::span<const Case> search_cases = rows;

}  // namespace allocation
