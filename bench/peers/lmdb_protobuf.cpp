// Nodes as protocol buffers in LMDB, under their numbers.
#include <array>
#include <cstdint>
#include <utility>

#include "peers/node.pb.h"
#include "peers/packed_store.hpp"

namespace bench {
namespace {

using NodeGetter = const std::string &(proto::Node::*)() const;
constexpr std::array<NodeGetter, kNodeTexts> kGetters = {
    &proto::Node::name,          &proto::Node::status,           &proto::Node::product,
    &proto::Node::description,   &proto::Node::bundle,           &proto::Node::mac_address,
    &proto::Node::fhvpn_address, &proto::Node::firmware_version, &proto::Node::model,
    &proto::Node::serial_number};
using NodeSetter = std::string *(proto::Node::*)();
constexpr std::array<NodeSetter, kNodeTexts> kTexts = {
    &proto::Node::mutable_name,          &proto::Node::mutable_status,
    &proto::Node::mutable_product,       &proto::Node::mutable_description,
    &proto::Node::mutable_bundle,        &proto::Node::mutable_mac_address,
    &proto::Node::mutable_fhvpn_address, &proto::Node::mutable_firmware_version,
    &proto::Node::mutable_model,         &proto::Node::mutable_serial_number};

proto::Node encode(const Node &node) {
  proto::Node out;
  for (std::size_t i = 0; i < kNodeTexts; ++i) *(out.*kTexts[i])() = node.texts[i];
  out.set_approved(node.approved);
  out.set_ssh_port(node.ssh_port);
  out.set_certificate(number_of(node.certificate.id.c_str()));
  for (const Etag &etag : node.etags) {
    proto::Etag *to = out.add_etags();
    to->set_id(etag.id);
    to->set_name(etag.name);
    to->set_status(etag.status);
    to->set_version(etag.version);
  }
  return out;
}

proto::Certificate encode(const Certificate &certificate) {
  proto::Certificate out;
  out.set_id(certificate.id);
  out.set_common_name(certificate.common_name);
  out.set_certificate(certificate.certificate);
  out.set_private_key(certificate.private_key);
  out.set_revoke_time(certificate.revoke_time);
  return out;
}

proto::NodeRest encode_rest(const Node &node) {
  proto::NodeRest out;
  for (const Interface &in : node.interfaces) {
    auto *to = out.add_interfaces();
    to->set_id(in.id);
    to->set_name(in.name);
    to->set_ipv4_address(in.ipv4_address);
    to->set_ipv6_address(in.ipv6_address);
  }
  for (const User &user : node.users) {
    auto *to = out.add_users();
    to->set_username(user.username);
    to->set_description(user.description);
    to->set_disabled(user.disabled);
    for (const std::string &group : user.groups) to->add_groups(group);
  }
  for (const Group &group : node.groups) {
    auto *to = out.add_groups();
    to->set_groupname(group.groupname);
    to->set_description(group.description);
    to->set_system(group.system);
    for (const std::string &role : group.roles) to->add_roles(role);
  }
  out.set_use_remote_groups(node.use_remote_groups);
  for (const std::string &text : node.auth) out.add_auth(text);
  return out;
}

char *copy(const std::string &text) { return copy_text(text.c_str()); }

template <class Strings>
void copy_all(const Strings &from, TextArray &to) {
  resize(to, static_cast<std::size_t>(from.size()));
  for (std::size_t i = 0; i < to.count; ++i) to.items[i] = copy(from[static_cast<int>(i)]);
}

void decode(const proto::Node &from, NodeCopy &out) {
  for (std::size_t i = 0; i < kNodeTexts; ++i) out.texts[i] = copy((from.*kGetters[i])());
  out.approved = from.approved();
  out.ssh_port = from.ssh_port();
  resize(out.etags, static_cast<std::size_t>(from.etags_size()));
  for (std::size_t i = 0; i < out.etags.count; ++i) {
    const proto::Etag &etag = from.etags(static_cast<int>(i));
    out.etags.items[i] = {copy(etag.id()), copy(etag.name()), copy(etag.status()), etag.version()};
  }
}

CertificateCopy *decode(const proto::Certificate &from) {
  auto *out = static_cast<CertificateCopy *>(allocate(sizeof(CertificateCopy)));
  *out = {copy(from.id()), copy(from.common_name()),
          copy_blob(from.certificate().data(), from.certificate().size()),
          copy_blob(from.private_key().data(), from.private_key().size()), from.revoke_time()};
  return out;
}

void decode(const proto::NodeRest &from, NodeCopy &out) {
  resize(out.interfaces, static_cast<std::size_t>(from.interfaces_size()));
  for (std::size_t i = 0; i < out.interfaces.count; ++i) {
    const auto &in = from.interfaces(static_cast<int>(i));
    out.interfaces.items[i] = {copy_text(out.id), copy(in.id()), copy(in.name()), copy(in.ipv4_address()),
                               copy(in.ipv6_address())};
  }
  resize(out.users, static_cast<std::size_t>(from.users_size()));
  for (std::size_t i = 0; i < out.users.count; ++i) {
    const auto &user = from.users(static_cast<int>(i));
    out.users.items[i] = {copy(user.username()), copy(user.description()), {}, user.disabled()};
    copy_all(user.groups(), out.users.items[i].groups);
  }
  resize(out.groups, static_cast<std::size_t>(from.groups_size()));
  for (std::size_t i = 0; i < out.groups.count; ++i) {
    const auto &group = from.groups(static_cast<int>(i));
    out.groups.items[i] = {copy(group.groupname()), copy(group.description()), {}, group.system()};
    copy_all(group.roles(), out.groups.items[i].roles);
  }
  out.use_remote_groups = from.use_remote_groups();
  for (std::size_t i = 0; i < kAuthTexts; ++i) out.auth[i] = copy(from.auth(static_cast<int>(i)));
}

// New messages for each load, as straightforward code has them, or the same ones again and again, which keep
// the memory that they have once taken.
enum class Messages { fresh, kept };

class ProtobufNodes final : public CopyingReader {
 public:
  ProtobufNodes(Messages messages, std::span<const Node> nodes, FieldSet set, const std::string &directory)
      : CopyingReader(set), messages_(messages), env_(open_lmdb_environment(directory, 3)) {
    MDB_txn *txn = nullptr;
    require_lmdb(mdb_txn_begin(env_, nullptr, 0, &txn));
    for (const auto &[name, dbi] :
         {std::pair{"nodes", &nodes_}, {"certificates", &certificates_}, {"rest", &rest_}})
      require_lmdb(mdb_dbi_open(txn, name, MDB_CREATE | MDB_INTEGERKEY, dbi));
    for (const Node &node : nodes) {
      put(txn, nodes_, node.number, encode(node));
      put(txn, certificates_, number_of(node.certificate.id.c_str()), encode(node.certificate));
      put(txn, rest_, node.number, encode_rest(node));
    }
    require_lmdb(mdb_txn_commit(txn));
    require_lmdb(mdb_txn_begin(env_, nullptr, MDB_RDONLY, &snapshot_));
  }
  ~ProtobufNodes() override {
    mdb_txn_abort(snapshot_);
    mdb_env_close(env_);
  }
  ProtobufNodes(const ProtobufNodes &) = delete;
  ProtobufNodes &operator=(const ProtobufNodes &) = delete;

 protected:
  NodeCopy *load(const char *id) override {
    if (messages_ == Messages::kept) return load_into(kept_, id);
    Parsed parsed;
    return load_into(parsed, id);
  }

 private:
  struct Parsed {
    proto::Node node;
    proto::Certificate certificate;
    proto::NodeRest rest;
  };

  NodeCopy *load_into(Parsed &parsed, const char *id) {
    const std::uint32_t number = number_of(id);
    NodeCopy *copy = new_node_copy();
    copy->id = copy_text(id);
    get(nodes_, number, parsed.node);
    decode(parsed.node, *copy);
    get(certificates_, parsed.node.certificate(), parsed.certificate);
    copy->certificate = decode(parsed.certificate);
    if (!whole()) return copy;
    get(rest_, number, parsed.rest);
    decode(parsed.rest, *copy);
    return copy;
  }

  static void put(MDB_txn *txn, MDB_dbi dbi, std::uint32_t number,
                  const google::protobuf::MessageLite &message) {
    std::string bytes = message.SerializeAsString();
    MDB_val key{sizeof number, &number}, value{bytes.size(), bytes.data()};
    require_lmdb(mdb_put(txn, dbi, &key, &value, MDB_APPEND));
  }
  void get(MDB_dbi dbi, std::uint32_t number, google::protobuf::MessageLite &message) {
    MDB_val key{sizeof number, &number}, value;
    require_lmdb(mdb_get(snapshot_, dbi, &key, &value));
    if (!message.ParseFromArray(value.mv_data, static_cast<int>(value.mv_size))) require_lmdb(MDB_CORRUPTED);
  }

  const Messages messages_;
  Parsed kept_;
  MDB_env *env_;
  MDB_txn *snapshot_ = nullptr;
  MDB_dbi nodes_ = 0, certificates_ = 0, rest_ = 0;
};

}  // namespace

std::unique_ptr<NodeReader> make_protobuf_lmdb(std::span<const Node> nodes, FieldSet set,
                                               const std::string &directory) {
  return std::make_unique<ProtobufNodes>(Messages::fresh, nodes, set, directory);
}

std::unique_ptr<NodeReader> make_kept_protobuf_lmdb(std::span<const Node> nodes, FieldSet set,
                                                    const std::string &directory) {
  return std::make_unique<ProtobufNodes>(Messages::kept, nodes, set, directory);
}

}  // namespace bench
