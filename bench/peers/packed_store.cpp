#include "peers/packed_store.hpp"

#include <cstdio>
#include <stdexcept>
#include <utility>

#include "peers/packed_record.hpp"

namespace bench {
namespace {

MDB_val value_of(const std::string &bytes) { return {bytes.size(), const_cast<char *>(bytes.data())}; }
MDB_val key_of(std::uint32_t &number) { return {sizeof number, &number}; }

// Ends a transaction that nobody committed.
class WriteTransaction {
 public:
  explicit WriteTransaction(MDB_env *env) { require_lmdb(mdb_txn_begin(env, nullptr, 0, &txn_)); }
  ~WriteTransaction() {
    if (txn_ != nullptr) mdb_txn_abort(txn_);
  }
  WriteTransaction(const WriteTransaction &) = delete;
  WriteTransaction &operator=(const WriteTransaction &) = delete;
  void put(MDB_dbi dbi, std::uint32_t number, const std::string &bytes, unsigned flags) {
    MDB_val key = key_of(number), value = value_of(bytes);
    require_lmdb(mdb_put(txn_, dbi, &key, &value, flags));
  }
  void commit() { require_lmdb(mdb_txn_commit(std::exchange(txn_, nullptr))); }
  MDB_txn *get() { return txn_; }

 private:
  MDB_txn *txn_ = nullptr;
};

}  // namespace

void require_lmdb(int code) {
  if (code != MDB_SUCCESS) throw std::runtime_error(mdb_strerror(code));
}

MDB_env *open_lmdb_environment(const std::string &directory, unsigned databases) {
  MDB_env *env = nullptr;
  require_lmdb(mdb_env_create(&env));
  require_lmdb(mdb_env_set_mapsize(env, std::size_t{4} << 30));
  require_lmdb(mdb_env_set_maxdbs(env, databases));
  require_lmdb(mdb_env_open(env, directory.c_str(), MDB_NOTLS, 0600));
  return env;
}

PackedStore::PackedStore(const std::string &directory) : env_(open_lmdb_environment(directory, 2)) {
  WriteTransaction txn(env_);
  require_lmdb(mdb_dbi_open(txn.get(), "nodes", MDB_CREATE | MDB_INTEGERKEY, &nodes_));
  require_lmdb(mdb_dbi_open(txn.get(), "certificates", MDB_CREATE | MDB_INTEGERKEY, &certificates_));
  txn.commit();
}

PackedStore::~PackedStore() {
  release_snapshot();
  mdb_env_close(env_);
}

void PackedStore::append(std::span<const Node> nodes) {
  WriteTransaction txn(env_);
  std::string bytes;
  for (const Node &node : nodes) {
    pack_node(node, bytes);
    txn.put(nodes_, node.number, bytes, MDB_APPEND);
    if (node.certificate.id.empty()) continue;
    pack_certificate(node.certificate, bytes);
    txn.put(certificates_, number_of(node.certificate.id.c_str()), bytes, MDB_APPEND);
  }
  txn.commit();
}

void PackedStore::change_description(std::uint32_t number, const std::string &description) {
  WriteTransaction txn(env_);
  MDB_val key = key_of(number), value;
  require_lmdb(mdb_get(txn.get(), nodes_, &key, &value));
  // The description is the fourth text: keep what stands before it and behind it.
  const char *begin = static_cast<const char *>(value.mv_data);
  PackedReader in(begin);
  for (std::size_t i = 0; i < kDescription; ++i) in.text();
  const std::string_view old = in.text();
  const auto length = static_cast<std::uint16_t>(description.size());
  std::string bytes(begin, old.data() - sizeof length);
  bytes.append(reinterpret_cast<const char *>(&length), sizeof length);
  bytes.append(description.c_str(), description.size() + 1);
  bytes.append(old.data() + old.size() + 1, begin + value.mv_size);
  txn.put(nodes_, number, bytes, 0);
  txn.commit();
}

void PackedStore::take_snapshot() {
  release_snapshot();
  require_lmdb(mdb_txn_begin(env_, nullptr, MDB_RDONLY, &snapshot_));
}

void PackedStore::release_snapshot() {
  if (snapshot_ != nullptr) mdb_txn_abort(std::exchange(snapshot_, nullptr));
}

NodeCopy *PackedStore::unpack(const void *record, const char *id, FieldSet set) {
  NodeCopy *node = new_node_copy();
  std::uint32_t certificate = unpack_node(record, id, set, *node);
  MDB_val key = key_of(certificate), value;
  require_lmdb(mdb_get(snapshot_, certificates_, &key, &value));
  node->certificate = unpack_certificate(value.mv_data);
  return node;
}

NodeCopy *PackedStore::load(const char *id, FieldSet set) {
  std::uint32_t number = number_of(id);
  MDB_val key = key_of(number), value;
  require_lmdb(mdb_get(snapshot_, nodes_, &key, &value));
  return unpack(value.mv_data, id, set);
}

NodeCopy *PackedStore::find_by_name(const char *name, FieldSet set) {
  const std::string_view wanted = name;
  MDB_cursor *cursor = nullptr;
  require_lmdb(mdb_cursor_open(snapshot_, nodes_, &cursor));
  NodeCopy *found = nullptr;
  MDB_val key, value;
  while (found == nullptr && mdb_cursor_get(cursor, &key, &value, MDB_NEXT) == MDB_SUCCESS) {
    PackedReader in(value.mv_data);
    const std::string_view candidate = in.text();
    // A node without a status cannot be loaded, which ends the scan.
    if (in.text().empty()) break;
    if (candidate != wanted) continue;
    char id[32];
    std::uint32_t number = 0;
    std::memcpy(&number, key.mv_data, sizeof number);
    std::snprintf(id, sizeof id, "nodes-%u", number);
    found = unpack(value.mv_data, id, set);
  }
  mdb_cursor_close(cursor);
  return found;
}

namespace {

class PackedNodes final : public CopyingReader {
 public:
  PackedNodes(std::span<const Node> nodes, FieldSet set, const std::string &directory)
      : CopyingReader(set), store_(directory) {
    store_.append(nodes);
    store_.take_snapshot();
  }

 protected:
  NodeCopy *load(const char *id) override { return store_.load(id, set_); }

 private:
  PackedStore store_;
};

}  // namespace

std::unique_ptr<NodeReader> make_packed_lmdb(std::span<const Node> nodes, FieldSet set,
                                             const std::string &directory) {
  return std::make_unique<PackedNodes>(nodes, set, directory);
}

}  // namespace bench
