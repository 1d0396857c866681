#include "record.hpp"

#include <cstring>

namespace twjobs {
namespace {

constexpr char kVersion = 1;

template <class Number>
void append(std::string &bytes, Number number) {
  bytes.append(reinterpret_cast<const char *>(&number), sizeof number);
}

// Takes what append() appended, and texts that end with a NUL, off the front of bytes.
class Reader {
 public:
  explicit Reader(std::string_view bytes) : rest_(bytes) {}

  template <class Number>
  bool take(Number &number) {
    if (rest_.size() < sizeof number) return false;
    std::memcpy(&number, rest_.data(), sizeof number);
    rest_.remove_prefix(sizeof number);
    return true;
  }
  bool take(std::string &text) {
    const std::size_t end = rest_.find('\0');
    if (end == std::string_view::npos) return false;
    text = rest_.substr(0, end);
    rest_.remove_prefix(end + 1);
    return true;
  }
  bool at_end() const { return rest_.empty(); }

 private:
  std::string_view rest_;
};

}  // namespace

std::string pack(const Record &record) {
  std::string bytes(1, kVersion);
  append(bytes, record.state);
  append(bytes, record.revision);
  append(bytes, record.created_ms);
  append(bytes, record.changed_ms);
  for (const std::string *text : {&record.node, &record.queue, &record.error})
    bytes.append(text->c_str(), text->size() + 1);
  return bytes;
}

bool unpack(std::string_view bytes, Record &record) {
  Reader reader(bytes);
  char version = 0;
  return reader.take(version) && version == kVersion && reader.take(record.state) &&
         reader.take(record.revision) && reader.take(record.created_ms) && reader.take(record.changed_ms) &&
         reader.take(record.node) && reader.take(record.queue) && reader.take(record.error) &&
         reader.at_end();
}

}  // namespace twjobs
