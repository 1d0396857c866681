#include "peers/packed_record.hpp"

namespace bench {
namespace {

class PackedWriter {
 public:
  explicit PackedWriter(std::string &out) : out_(out) { out_.clear(); }
  template <class Number>
  void number(Number value) {
    char bytes[sizeof value];
    std::memcpy(bytes, &value, sizeof value);
    out_.append(bytes, sizeof value);
  }
  void text(const std::string &text) {
    number(static_cast<std::uint16_t>(text.size()));
    out_.append(text.c_str(), text.size() + 1);
  }
  void texts(const std::vector<std::string> &texts) {
    count(texts);
    for (const std::string &item : texts) text(item);
  }
  template <class Items>
  void count(const Items &items) {
    number(static_cast<std::uint16_t>(items.size()));
  }

 private:
  std::string &out_;
};

void unpack_texts(PackedReader &in, TextArray &out) {
  resize(out, in.number<std::uint16_t>());
  for (std::size_t i = 0; i < out.count; ++i) out.items[i] = in.text_copy();
}

void unpack_rest(PackedReader &in, NodeCopy &out) {
  resize(out.interfaces, in.number<std::uint16_t>());
  for (std::size_t i = 0; i < out.interfaces.count; ++i) {
    InterfaceCopy &interface = out.interfaces.items[i];
    interface.node_id = copy_text(out.id);
    for (char **text : {&interface.id, &interface.name, &interface.ipv4_address, &interface.ipv6_address})
      *text = in.text_copy();
  }
  resize(out.users, in.number<std::uint16_t>());
  for (std::size_t i = 0; i < out.users.count; ++i) {
    UserCopy &user = out.users.items[i];
    user.username = in.text_copy();
    user.description = in.text_copy();
    user.disabled = in.number<std::int32_t>();
    unpack_texts(in, user.groups);
  }
  resize(out.groups, in.number<std::uint16_t>());
  for (std::size_t i = 0; i < out.groups.count; ++i) {
    GroupCopy &group = out.groups.items[i];
    group.groupname = in.text_copy();
    group.description = in.text_copy();
    group.system = in.number<std::int32_t>();
    unpack_texts(in, group.roles);
  }
  out.use_remote_groups = in.number<std::int32_t>();
  for (char *&text : out.auth) text = in.text_copy();
}

}  // namespace

void pack_node(const Node &node, std::string &bytes) {
  PackedWriter out(bytes);
  for (const std::string &text : node.texts) out.text(text);
  out.number(static_cast<std::int32_t>(node.approved));
  out.number(node.ssh_port);
  out.number(node.certificate.id.empty() ? 0 : number_of(node.certificate.id.c_str()));
  out.count(node.etags);
  for (const Etag &etag : node.etags) {
    for (const std::string *text : {&etag.id, &etag.name, &etag.status}) out.text(*text);
    out.number(etag.version);
  }
  out.count(node.interfaces);
  for (const Interface &in : node.interfaces)
    for (const std::string *text : {&in.id, &in.name, &in.ipv4_address, &in.ipv6_address}) out.text(*text);
  out.count(node.users);
  for (const User &user : node.users) {
    for (const std::string *text : {&user.username, &user.description}) out.text(*text);
    out.number(user.disabled);
    out.texts(user.groups);
  }
  out.count(node.groups);
  for (const Group &group : node.groups) {
    for (const std::string *text : {&group.groupname, &group.description}) out.text(*text);
    out.number(static_cast<std::int32_t>(group.system));
    out.texts(group.roles);
  }
  out.number(static_cast<std::int32_t>(node.use_remote_groups));
  for (const std::string &text : node.auth) out.text(text);
}

void pack_certificate(const Certificate &certificate, std::string &bytes) {
  PackedWriter out(bytes);
  for (const std::string *text :
       {&certificate.id, &certificate.common_name, &certificate.certificate, &certificate.private_key})
    out.text(*text);
  out.number(certificate.revoke_time);
}

std::uint32_t unpack_node(const void *record, const char *id, FieldSet set, NodeCopy &out) {
  PackedReader in(record);
  out.id = copy_text(id);
  for (char *&text : out.texts) text = in.text_copy();
  out.approved = in.number<std::int32_t>();
  out.ssh_port = in.number<std::uint32_t>();
  const auto certificate = in.number<std::uint32_t>();
  resize(out.etags, in.number<std::uint16_t>());
  for (std::size_t i = 0; i < out.etags.count; ++i) {
    EtagCopy &etag = out.etags.items[i];
    for (char **text : {&etag.id, &etag.name, &etag.status}) *text = in.text_copy();
    etag.version = in.number<std::int32_t>();
  }
  if (set == FieldSet::whole) unpack_rest(in, out);
  return certificate;
}

CertificateCopy *unpack_certificate(const void *record) {
  PackedReader in(record);
  auto *out = static_cast<CertificateCopy *>(allocate(sizeof(CertificateCopy)));
  for (char **text : {&out->id, &out->common_name}) *text = in.text_copy();
  for (char **blob : {&out->certificate, &out->private_key}) *blob = in.blob_copy();
  out->revoke_time = in.number<std::int32_t>();
  return out;
}

}  // namespace bench
