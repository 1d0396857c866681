// Texts that may be NULL, heap strings, arrays of them.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <twobject/owner.hpp>

#include "allocation/failing_allocator.hpp"

namespace {

using namespace twobject;

TEST(Text, NullIsNoTextAndAnEmptyTextIsOne) {
  EXPECT_EQ(text_of(nullptr), std::nullopt);
  EXPECT_EQ(text_of(""), "");
  EXPECT_EQ(text_of("label"), "label");
}

TEST(Text, HeapTextsAreGivenBackWithTheirArray) {
  const allocation::Watch watch;
  {
    char **array = static_cast<char **>(std::calloc(3, sizeof *array));
    array[0] = strdup("first");
    array[2] = strdup("third");
    heap_texts texts(array, 3);
    EXPECT_EQ(watch.left(), 3U);
    heap_texts moved(std::move(texts));
    EXPECT_EQ(moved.size(), 3);
    EXPECT_STREQ(moved[0], "first");
    EXPECT_EQ(moved[1], nullptr);
    texts = std::move(moved);
    EXPECT_STREQ(texts[2], "third");
  }
  EXPECT_EQ(watch.left(), 0U);
}

TEST(Text, AnArrayThatEndsWithNullNeedsNoCount) {
  char **array = static_cast<char **>(std::calloc(2, sizeof *array));
  array[0] = strdup("only");
  const heap_texts texts(array);
  EXPECT_EQ(texts.size(), 1);
  EXPECT_TRUE(heap_texts(nullptr).empty());
  EXPECT_TRUE(heap_texts(nullptr, 3).empty());
}

constexpr char clear_text[] = "correct horse battery staple";
const void *of_secret = nullptr;
bool was_wiped = false;

bool is_wiped(const void *block) {
  const auto *bytes = static_cast<const char *>(block);
  return std::all_of(bytes, bytes + sizeof clear_text, [](char byte) { return byte == '\0'; });
}

TEST(Text, ASecretIsWipedBeforeItIsGivenBackAndAPlainTextIsNot) {
  const allocation::Watch watch([](const void *block) {
    if (block == of_secret) was_wiped = is_wiped(block);
  });
  secret_text secret(strdup(clear_text));
  of_secret = secret.get();
  secret.reset();
  EXPECT_TRUE(was_wiped);
  heap_text plain(strdup(clear_text));
  of_secret = plain.get();
  plain.reset();
  EXPECT_FALSE(was_wiped);
}

}  // namespace
