#include <gtest/gtest.h>
#include <twmisc.h>

#include <cstdlib>
#include <cstring>
#include <string>

TEST(ReplaceHeapString, FormatsIntoAnEmptyVariable) {
  char *text = nullptr;
  EXPECT_EQ(twmisc_replace_heap_string(&text, "nodes.%s.status.connection_status", "nodes-12"), 1);
  EXPECT_STREQ(text, "nodes.nodes-12.status.connection_status");
  free(text);
}

TEST(ReplaceHeapString, FreesTheOldString) {
  char *text = strdup("old");  // the leak checker watches
  EXPECT_EQ(twmisc_replace_heap_string(&text, "new %d", 7), 1);
  EXPECT_STREQ(text, "new 7");
  free(text);
}

TEST(ReplaceHeapString, TheOldStringMayBeAnArgument) {
  char *text = strdup("path");
  EXPECT_EQ(twmisc_replace_heap_string(&text, "%s.%s", text, text), 1);
  EXPECT_STREQ(text, "path.path");
  free(text);
}

TEST(ReplaceHeapString, MakesStringsOfAnyLength) {
  const std::string half(1 << 20, 'x');
  char *text = nullptr;
  EXPECT_EQ(twmisc_replace_heap_string(&text, "%s%s", half.c_str(), half.c_str()), 1);
  EXPECT_EQ(text, half + half);
  free(text);
}

TEST(ReplaceHeapString, AnEmptyResultIsAString) {
  char *text = nullptr;
  EXPECT_EQ(twmisc_replace_heap_string(&text, "%s", ""), 1);
  EXPECT_STREQ(text, "");
  free(text);
}

TEST(ReplaceHeapString, NullArgumentsFailAndChangeNothing) {
  char *text = strdup("kept");
  const char *no_format = nullptr;
  EXPECT_EQ(twmisc_replace_heap_string(nullptr, "x"), 0);
  EXPECT_EQ(twmisc_replace_heap_string(&text, no_format, 0), 0);
  EXPECT_STREQ(text, "kept");
  free(text);
}

TEST(ReplaceHeapString, AFormatThatFailsKeepsTheOldString) {
  char *text = strdup("kept");
  const wchar_t impossible[] = {static_cast<wchar_t>(0x7fffffff), 0};  // no character of any locale
  EXPECT_EQ(twmisc_replace_heap_string(&text, "%ls", impossible), 0);
  EXPECT_STREQ(text, "kept");
  free(text);
}
