// Publishing, reading, visiting and removing values.
#include <chrono>

#include "infod_fixture.hpp"

namespace infod {
namespace {

using texts = std::vector<std::string>;

int64_t now_ms() {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
}

TEST_F(InfodTest, APublishedTextIsRead) {
  EXPECT_EQ(push("nodes.nodes-1.status.connection_status", "CONNECTED"), 0);
  EXPECT_EQ(text_of("nodes.nodes-1.status.connection_status"), "CONNECTED");
}

TEST_F(InfodTest, TheNewestTextOfAKeyCounts) {
  push("a", "first");
  push("a", "second and longer");
  EXPECT_EQ(text_of("a"), "second and longer");
  push("a", "");
  EXPECT_EQ(text_of("a"), "");
}

TEST_F(InfodTest, TheTimeStampIsThatOfThePublishingInMilliseconds) {
  const int64_t before = now_ms();
  push("a", "1");
  const int64_t after = now_ms();
  char *text = nullptr;
  int64_t time_ms = 0;
  ASSERT_EQ(infod_get_extended("a", &text, &time_ms), 0);
  std::free(text);
  EXPECT_GE(time_ms, before);
  EXPECT_LE(time_ms, after);
}

TEST_F(InfodTest, TextsAndKindsComeBackByteForByte) {
  std::string text;
  for (int byte = 1; byte < 256; ++byte) text.push_back(static_cast<char>(byte));
  ASSERT_EQ(infod_push_text("bytes", text.c_str(), INT32_MIN), 0);
  EXPECT_EQ(text_of("bytes"), text);
  int32_t kind = 0;
  infod_visit(
      "",
      [](void *context, const infod_value *value) {
        *static_cast<int32_t *>(context) = value->kind;
        return 0;
      },
      &kind);
  EXPECT_EQ(kind, INT32_MIN);
}

TEST_F(InfodTest, AKeyIsReadWholeNotByItsBeginning) {
  push("nodes.nodes-1", "one");
  push("nodes.nodes-12", "twelve");
  EXPECT_EQ(text_of("nodes.nodes-1"), "one");
  EXPECT_EQ(text_of("nodes.nodes-"), missing);
  EXPECT_EQ(text_of("nodes.nodes-123"), missing);
}

TEST_F(InfodTest, AFailedReadLeavesItsResultsAlone) {
  push("a", "1");
  char *text = nullptr;
  int64_t time_ms = 42;
  EXPECT_EQ(infod_get_extended("b", &text, &time_ms), -ENOENT);
  EXPECT_EQ(text, nullptr);
  EXPECT_EQ(time_ms, 42);
}

TEST_F(InfodTest, SizesUpToTheBoundsAreTakenAndNoLargerOnes) {
  const std::string key(INFOD_KEY_MAX, 'k'), text(INFOD_TEXT_MAX, 't');
  EXPECT_EQ(push(key, text), 0);
  EXPECT_EQ(text_of(key), text);
  EXPECT_EQ(push(key + "k", "text"), -EINVAL);
  EXPECT_EQ(push("key", text + "t"), -EINVAL);
  EXPECT_EQ(push("", "text"), -EINVAL);
  EXPECT_EQ(text_of(""), "error " + std::to_string(-EINVAL));
}

TEST_F(InfodTest, NullIsRefusedEverywhere) {
  push("a", "1");
  char *text = nullptr;
  EXPECT_EQ(infod_push_text(nullptr, "text", 2), -EINVAL);
  EXPECT_EQ(infod_push_text("a", nullptr, 2), -EINVAL);
  EXPECT_EQ(infod_get_extended(nullptr, &text, nullptr), -EINVAL);
  EXPECT_EQ(infod_get_extended("a", nullptr, nullptr), -EINVAL);
  EXPECT_EQ(infod_get_multiple_extended(nullptr, "a", &text, nullptr), -EINVAL);
  EXPECT_EQ(infod_visit(
                nullptr, [](void *, const infod_value *) { return 0; }, nullptr),
            -EINVAL);
  EXPECT_EQ(infod_visit("", nullptr, nullptr), -EINVAL);
  EXPECT_EQ(infod_remove(nullptr), -EINVAL);
  EXPECT_EQ(infod_remove(""), -EINVAL);
  infod_get_multiple_end(nullptr);
  EXPECT_EQ(all(), texts{"a=1"});
}

TEST_F(InfodTest, AMultipleReadSeesOneMoment) {
  push("reloading", "false");
  push("status", "up");
  infod_multiple *multiple = infod_get_multiple_start();
  ASSERT_NE(multiple, nullptr);
  EXPECT_EQ(text_of(multiple, "reloading"), "false");
  push("reloading", "true");
  push("status", "down");
  push("new", "one");
  EXPECT_EQ(text_of(multiple, "reloading"), "false");
  EXPECT_EQ(text_of(multiple, "status"), "up");
  EXPECT_EQ(text_of(multiple, "new"), missing);
  EXPECT_EQ(text_of("status"), "down") << "others see the newest";
  infod_get_multiple_end(multiple);
}

TEST_F(InfodTest, AMultipleReadTellsTimeStamps) {
  push("a", "1");
  char *text = nullptr;
  int64_t single = 0, several = 1;
  ASSERT_EQ(infod_get_extended("a", &text, &single), 0);
  std::free(text);
  infod_multiple *multiple = infod_get_multiple_start();
  ASSERT_EQ(infod_get_multiple_extended(multiple, "a", &text, &several), 0);
  std::free(text);
  infod_get_multiple_end(multiple);
  EXPECT_EQ(single, several);
}

TEST_F(InfodTest, SeveralMultipleReadsEachSeeTheirOwnMoment) {
  push("a", "1");
  infod_multiple *first = infod_get_multiple_start();
  push("a", "2");
  infod_multiple *second = infod_get_multiple_start();
  push("a", "3");
  EXPECT_EQ(text_of(first, "a"), "1");
  EXPECT_EQ(text_of(second, "a"), "2");
  infod_get_multiple_end(first);
  EXPECT_EQ(text_of(second, "a"), "2");
  infod_get_multiple_end(second);
}

TEST_F(InfodTest, AVisitTellsTheKeysWithAPrefixInOrder) {
  for (const char *key : {"b", "a.2", "a.1", "a", "c"}) push(key, key);
  EXPECT_EQ(all("a"), (texts{"a=a", "a.1=a.1", "a.2=a.2"}));
  EXPECT_EQ(all(), (texts{"a=a", "a.1=a.1", "a.2=a.2", "b=b", "c=c"}));
  EXPECT_EQ(all("d"), texts{});
}

TEST_F(InfodTest, AVisitEndsWithWhatTheVisitorAnswers) {
  push("a", "1");
  push("b", "2");
  int seen = 0;
  EXPECT_EQ(infod_visit(
                "",
                [](void *context, const infod_value *) {
                  ++*static_cast<int *>(context);
                  return 77;
                },
                &seen),
            77);
  EXPECT_EQ(seen, 1);
}

TEST_F(InfodTest, AVisitorMayPublishAndRead) {
  push("a", "1");
  EXPECT_EQ(infod_visit(
                "a",
                [](void *, const infod_value *value) {
                  return push("copy of " + std::string(value->key), text_of(value->key));
                },
                nullptr),
            0);
  EXPECT_EQ(text_of("copy of a"), "1");
}

TEST_F(InfodTest, RemovingTakesAwayTheKeysWithAPrefixAndNoOthers) {
  for (const char *key : {"nodes.nodes-1.a", "nodes.nodes-1.b", "nodes.nodes-12.a", "nodes.nodes-2.a"})
    push(key, "x");
  EXPECT_EQ(infod_remove("nodes.nodes-1."), 0);
  EXPECT_EQ(all(), (texts{"nodes.nodes-12.a=x", "nodes.nodes-2.a=x"}));
  EXPECT_EQ(infod_remove("nodes.nodes-1."), 0) << "again";
  EXPECT_EQ(infod_remove("nodes"), 0);
  EXPECT_EQ(all(), texts{});
}

TEST_F(InfodTest, ManyKeysAreKeptAndRemoved) {
  for (int i = 0; i < 2000; ++i) ASSERT_EQ(push("nodes.nodes-" + std::to_string(i), std::to_string(i)), 0);
  for (int i = 0; i < 2000; ++i) ASSERT_EQ(text_of("nodes.nodes-" + std::to_string(i)), std::to_string(i));
  EXPECT_EQ(infod_remove("nodes."), 0);
  EXPECT_EQ(all(), texts{});
}

}  // namespace
}  // namespace infod
