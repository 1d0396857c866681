// Whatever comes, searchd answers or hangs up, and serves the next one.
#include <random>

#include "searchd/fleet.hpp"
#include "searchd/searchd_process.hpp"

namespace searchd_tests {
namespace {

class SearchdFuzz : public Fleet {};

std::string mutated(std::string text, std::mt19937 &random) {
  static const char *const pieces[] = {"\"",
                                       "{",
                                       "}",
                                       "[",
                                       "]",
                                       ":",
                                       ",",
                                       "0",
                                       "-1",
                                       "null",
                                       "true",
                                       "\\u0000",
                                       "\xff",
                                       "1e999",
                                       "\"and\"",
                                       "\"secctxt\"",
                                       "9223372036854775808",
                                       "tag:",
                                       "nodes"};
  const auto below = [&](std::size_t end) {
    return std::uniform_int_distribution<std::size_t>(0, end - 1)(random);
  };
  for (std::size_t changes = 1 + below(4); changes > 0; --changes) {
    const std::size_t at = below(text.size() + 1);
    switch (below(4)) {
      case 0:
        text.insert(at, pieces[below(std::size(pieces))]);
        break;
      case 1:
        text.erase(at, 1 + below(8));
        break;
      case 2:
        if (at < text.size()) text[at] = static_cast<char>(below(256));
        break;
      default:
        text.insert(at, text.substr(below(text.size() + 1), below(40)));
    }
    if (text.empty()) text = "x";
  }
  return text;
}

TEST_F(SearchdFuzz, NoMessageEndsTheService) {
  const std::string bundle = tag("Bundle");
  give(node("a"), value(bundle, "north"));
  commit();
  Searchd searchd(store_path(), socket_path());
  const std::string seeds[] = {
      R"({"method":"hello","data":{"client_name":"src/search-4711"}})",
      R"({"method":"get_fields","data":{"object":"nodes"}})",
      R"({"method":"search","data":{"object":"nodes","conditions":{"and":[{"key":"tag:Bundle","op":"equal","string":"north"},{"key":"name","op":"not_equal","string":"b"},{"key":"status","op":"absent"}]}},"secctxt":"alice","verb":0})",
      R"({"method":"get","data":{"id":"00112233445566778899aabbccddeeff","offset":0,"limit":0}})"};
  std::mt19937 random(4711);
  auto client = std::make_unique<Client>(searchd.socket());
  for (int i = 0; i < 20'000; ++i) {
    const std::string message = mutated(seeds[static_cast<std::size_t>(i) % std::size(seeds)], random);
    const std::string reply = client->ask(message);
    ASSERT_TRUE(reply.starts_with(R"({"result":)")) << message << " was answered with " << reply;
  }
  for (int i = 0; i < 500; ++i) {  // bytes without frame
    Client rude(searchd.socket(), false);
    std::string bytes(std::uniform_int_distribution<std::size_t>(1, 200)(random), '\0');
    for (char &byte : bytes) byte = static_cast<char>(random());
    if (i % 2 == 0) bytes.replace(0, std::min<std::size_t>(bytes.size(), 3), "\0\0\0", 3);
    rude.send_bytes(bytes);
  }
  EXPECT_EQ(client->find("nodes", equal("tag:Bundle", "north")), "nodes-1");
  EXPECT_EQ(searchd.end(15), 0);
}

}  // namespace
}  // namespace searchd_tests
