#include <twmisc.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

int twmisc_replace_heap_string(char **target, const char *format, ...) noexcept {
  if (!target || !format) return 0;
  va_list arguments;
  va_start(arguments, format);
  char *text = nullptr;
  const int length = vasprintf(&text, format, arguments);
  va_end(arguments);
  if (length < 0) return 0;
  free(*target);
  *target = text;
  return 1;
}
