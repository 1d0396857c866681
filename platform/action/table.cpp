#include "table.hpp"

#include <cerrno>
#include <cstring>

namespace twjobs {
namespace {

// The first byte of a key says what it leads to.
constexpr char kAction = 'a';  // and the number, highest byte first: the record
constexpr char kCount = 'c';   // the last number that was given
constexpr char kPlace = 'p';   // and node, NUL, queue: the number of the action there

std::string action_key(std::uint64_t id) {
  std::string key(1, kAction);
  for (int shift = 56; shift >= 0; shift -= 8) key.push_back(static_cast<char>(id >> shift));
  return key;
}

std::uint64_t id_of(const MDB_val &key) {
  std::uint64_t id = 0;
  const auto *bytes = static_cast<const unsigned char *>(key.mv_data);
  for (std::size_t i = 1; i < key.mv_size; ++i) id = id << 8U | bytes[i];
  return id;
}

std::string place_key(const std::string &node, const std::string &queue) {
  return std::string(1, kPlace) + node + '\0' + queue;
}

MDB_val bytes_of(const std::string &text) { return twlmdb::bytes_of(text.data(), text.size()); }

int get_number(const twlmdb::Access &access, const std::string &key, std::uint64_t &number) {
  MDB_val value{};
  if (const int result = access.get(bytes_of(key), value)) return result;
  if (value.mv_size != sizeof number) return -EBADMSG;
  std::memcpy(&number, value.mv_data, sizeof number);
  return 0;
}

int put_number(const twlmdb::Access &access, const std::string &key, std::uint64_t number) {
  return access.put(bytes_of(key), twlmdb::bytes_of(&number, sizeof number));
}

}  // namespace

int Table::get(std::uint64_t id, Record &record) const {
  MDB_val value{};
  if (const int result = access_.get(bytes_of(action_key(id)), value)) return result;
  return unpack({static_cast<const char *>(value.mv_data), value.mv_size}, record) ? 0 : -EBADMSG;
}

int Table::find(const std::string &node, const std::string &queue, std::uint64_t &id) const {
  return get_number(access_, place_key(node, queue), id);
}

int Table::list(std::vector<std::uint64_t> &ids) const {
  return access_.scan(twlmdb::bytes_of(&kAction, 1), [&](const MDB_val &key, const MDB_val &) {
    ids.push_back(id_of(key));
    return 0;
  });
}

int Table::add(const Record &record, std::uint64_t &id) const {
  const std::string counter(1, kCount);
  std::uint64_t last = 0;
  if (const int result = get_number(access_, counter, last); result != 0 && result != -ENOENT) return result;
  if (const int result = put_number(access_, counter, last + 1)) return result;
  id = last + 1;
  return put(id, record);
}

int Table::replace(std::uint64_t id, const Record &record) const {
  Record old;
  if (const int result = get(id, old)) return result;
  if (const int result = forget_place(id, old)) return result;
  if (record.node.empty()) return put(id, record);
  std::uint64_t other = 0;
  int result = find(record.node, record.queue, other);
  if (result == 0) result = access_.remove(bytes_of(action_key(other)));
  if (result != 0 && result != -ENOENT) return result;
  result = put_number(access_, place_key(record.node, record.queue), id);
  return result == 0 ? put(id, record) : result;
}

int Table::remove(std::uint64_t id) const {
  Record old;
  if (const int result = get(id, old)) return result;
  if (const int result = forget_place(id, old)) return result;
  return access_.remove(bytes_of(action_key(id)));
}

int Table::put(std::uint64_t id, const Record &record) const {
  const std::string bytes = pack(record);
  return access_.put(bytes_of(action_key(id)), bytes_of(bytes));
}

int Table::forget_place(std::uint64_t id, const Record &record) const {
  std::uint64_t there = 0;
  const int result = record.node.empty() ? -ENOENT : find(record.node, record.queue, there);
  if (result == -ENOENT || (result == 0 && there != id)) return 0;
  return result == 0 ? access_.remove(bytes_of(place_key(record.node, record.queue))) : result;
}

}  // namespace twjobs
