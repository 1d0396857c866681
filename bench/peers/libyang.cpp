// Nodes in libyang's data tree, which is wholly in memory; entries are found by their keys, which are hashed.
#include <libyang/libyang.h>

#include <algorithm>
#include <array>
#include <cstdio>

#include <stdexcept>

#include "peers/reader.hpp"

namespace bench {
namespace {

constexpr const char *kModule = R"(
module tw-nodes {
  yang-version 1.1;
  namespace "urn:example:tw-nodes";
  prefix tw;
  container nodes {
    list node {
      key "id";
      leaf id { type string; }
      leaf name { type string; }
      leaf status { type string; }
      leaf product { type string; }
      leaf description { type string; }
      leaf bundle { type string; }
      leaf mac_address { type string; }
      leaf fhvpn_address { type string; }
      leaf firmware_version { type string; }
      leaf model { type string; }
      leaf serial_number { type string; }
      leaf approved { type boolean; }
      leaf ssh_port { type uint32; }
      leaf certificate { type string; }
      list etag {
        key "id";
        leaf id { type string; }
        leaf name { type string; }
        leaf status { type string; }
        leaf version { type int32; }
      }
      list interface {
        key "id";
        leaf id { type string; }
        leaf name { type string; }
        leaf ipv4_address { type string; }
        leaf ipv6_address { type string; }
      }
      list user {
        key "username";
        leaf username { type string; }
        leaf description { type string; }
        leaf disabled { type int32; }
        leaf-list text { type string; ordered-by user; }
      }
      list group {
        key "groupname";
        leaf groupname { type string; }
        leaf description { type string; }
        leaf system { type boolean; }
        leaf-list text { type string; ordered-by user; }
      }
      leaf use_remote_groups { type boolean; }
      list auth {
        key "position";
        ordered-by user;
        leaf position { type uint8; }
        leaf text { type string; }
      }
    }
  }
  container certificates {
    list certificate {
      key "id";
      leaf id { type string; }
      leaf common_name { type string; }
      leaf certificate { type string; }
      leaf private_key { type string; }
      leaf revoke_time { type int32; }
    }
  }
}
)";

void require_yang(LY_ERR code) {
  if (code != LY_SUCCESS) throw std::runtime_error("libyang refused a call");
}

// A list of the module and the leaves that are read from its entries, in schema order.
struct Schema {
  const lysc_node *list = nullptr;
  std::vector<const lysc_node *> leaves;
};

// Reads children of an entry in schema order, the order in which the tree keeps them.
class Walk {
 public:
  explicit Walk(const lyd_node *entry) : at_(lyd_child(entry)) {}
  const lyd_node *next(const lysc_node *schema) {
    while (at_ != nullptr && at_->schema != schema) at_ = at_->next;
    if (at_ == nullptr) throw std::runtime_error("libyang's tree lacks a value");
    const lyd_node *found = at_;
    at_ = at_->next;
    return found;
  }
  char *text(const lysc_node *schema) { return copy_text(lyd_get_value(next(schema))); }
  const lyd_value &value(const lysc_node *schema) {
    return reinterpret_cast<const lyd_node_term *>(next(schema))->value;
  }
  // Calls `each` for the run of children of one list.
  template <class Each>
  void run(const lysc_node *schema, Each each) {
    while (at_ != nullptr && at_->schema != schema) at_ = at_->next;
    for (; at_ != nullptr && at_->schema == schema; at_ = at_->next) each(at_);
  }
  template <class Item, class Fill>
  void items(const lysc_node *schema, Array<Item> &out, Fill fill) {
    std::array<Item, 32> found{};
    std::size_t count = 0;
    run(schema, [&](const lyd_node *entry) {
      if (count < found.size()) fill(found[count++], entry);
    });
    resize(out, count);
    std::copy_n(found.begin(), count, out.items);
  }
  void texts(const lysc_node *schema, TextArray &out) {
    Array<char *> texts;
    items(schema, texts, [](char *&text, const lyd_node *leaf) { text = copy_text(lyd_get_value(leaf)); });
    out = {texts.items, texts.count};
  }

 private:
  const lyd_node *at_;
};

class LibyangNodes final : public CopyingReader {
 public:
  LibyangNodes(std::span<const Node> nodes, FieldSet set) : CopyingReader(set) {
    require_yang(ly_ctx_new(nullptr, 0, &context_));
    require_yang(lys_parse_mem(context_, kModule, LYS_IN_YANG, &module_));
    require_yang(lyd_new_inner(nullptr, module_, "nodes", 0, &nodes_));
    require_yang(lyd_new_inner(nullptr, module_, "certificates", 0, &certificates_));
    require_yang(lyd_insert_sibling(nodes_, certificates_, &nodes_));
    node_ = schema(nodes_->schema, "node", {kNodeKeys.begin(), kNodeKeys.end()});
    for (const char *leaf : {"approved", "ssh_port", "certificate", "use_remote_groups"})
      node_.leaves.push_back(child(node_.list, leaf));
    etag_ = schema(node_.list, "etag", {"id", "name", "status", "version"});
    interface_ = schema(node_.list, "interface", {"id", "name", "ipv4_address", "ipv6_address"});
    user_ = schema(node_.list, "user", {"username", "description", "disabled", "text"});
    group_ = schema(node_.list, "group", {"groupname", "description", "system", "text"});
    auth_ = schema(node_.list, "auth", {"text"});
    certificate_ = schema(certificates_->schema, "certificate",
                          {"common_name", "certificate", "private_key", "revoke_time"});
    for (const Node &node : nodes) add(node);
  }
  ~LibyangNodes() override {
    lyd_free_all(nodes_);
    ly_ctx_destroy(context_);
  }
  LibyangNodes(const LibyangNodes &) = delete;
  LibyangNodes &operator=(const LibyangNodes &) = delete;

 protected:
  NodeCopy *load(const char *id) override {
    Walk walk(find(nodes_, node_.list, id));
    NodeCopy *node = new_node_copy();
    node->id = copy_text(id);
    for (std::size_t i = 0; i < kNodeTexts; ++i) node->texts[i] = walk.text(node_.leaves[i]);
    node->approved = walk.value(node_.leaves[kNodeTexts]).boolean;
    node->ssh_port = walk.value(node_.leaves[kNodeTexts + 1]).uint32;
    const char *certificate = lyd_get_value(walk.next(node_.leaves[kNodeTexts + 2]));
    walk.items(etag_.list, node->etags, [&](EtagCopy &out, const lyd_node *entry) {
      Walk etag(entry);
      out.id = etag.text(etag_.leaves[0]);
      out.name = etag.text(etag_.leaves[1]);
      out.status = etag.text(etag_.leaves[2]);
      out.version = etag.value(etag_.leaves[3]).int32;
    });
    node->certificate = load_certificate(certificate);
    if (whole()) load_rest(walk, *node);
    return node;
  }

 private:
  static const lysc_node *child(const lysc_node *parent, const char *name) {
    const lysc_node *found = lys_find_child(parent, parent->module, name, 0, 0, 0);
    if (found == nullptr) throw std::runtime_error("the module lacks a node");
    return found;
  }
  static Schema schema(const lysc_node *parent, const char *list, const std::vector<const char *> &leaves) {
    Schema schema{child(parent, list), {}};
    for (const char *leaf : leaves) schema.leaves.push_back(child(schema.list, leaf));
    return schema;
  }

  static const lyd_node *find(const lyd_node *container, const lysc_node *list, const char *id) {
    char keys[64];
    const int length = std::snprintf(keys, sizeof keys, "[id='%s']", id);
    lyd_node *found = nullptr;
    require_yang(
        lyd_find_sibling_val(lyd_child(container), list, keys, static_cast<std::size_t>(length), &found));
    return found;
  }

  static void add_leaf(lyd_node *parent, const char *name, const std::string &value) {
    require_yang(lyd_new_term(parent, nullptr, name, value.c_str(), 0, nullptr));
  }
  static lyd_node *add_entry(lyd_node *parent, const char *list, const std::string &key) {
    lyd_node *entry = nullptr;
    require_yang(lyd_new_list(parent, nullptr, list, 0, &entry, key.c_str()));
    return entry;
  }
  static const char *truth(bool value) { return value ? "true" : "false"; }

  void add(const Node &node) {
    lyd_node *entry = add_entry(nodes_, "node", node.id);
    for (std::size_t i = 0; i < kNodeTexts; ++i) add_leaf(entry, kNodeKeys[i], node.texts[i]);
    add_leaf(entry, "approved", truth(node.approved));
    add_leaf(entry, "ssh_port", std::to_string(node.ssh_port));
    add_leaf(entry, "certificate", node.certificate.id);
    for (const Etag &etag : node.etags) {
      lyd_node *to = add_entry(entry, "etag", etag.id);
      add_leaf(to, "name", etag.name);
      add_leaf(to, "status", etag.status);
      add_leaf(to, "version", std::to_string(etag.version));
    }
    for (const Interface &in : node.interfaces) {
      lyd_node *to = add_entry(entry, "interface", in.id);
      add_leaf(to, "name", in.name);
      add_leaf(to, "ipv4_address", in.ipv4_address);
      add_leaf(to, "ipv6_address", in.ipv6_address);
    }
    for (const User &user : node.users) {
      lyd_node *to = add_entry(entry, "user", user.username);
      add_leaf(to, "description", user.description);
      add_leaf(to, "disabled", std::to_string(user.disabled));
      for (const std::string &group : user.groups) add_leaf(to, "text", group);
    }
    for (const Group &group : node.groups) {
      lyd_node *to = add_entry(entry, "group", group.groupname);
      add_leaf(to, "description", group.description);
      add_leaf(to, "system", truth(group.system));
      for (const std::string &role : group.roles) add_leaf(to, "text", role);
    }
    add_leaf(entry, "use_remote_groups", truth(node.use_remote_groups));
    for (std::size_t i = 0; i < kAuthTexts; ++i)
      add_leaf(add_entry(entry, "auth", std::to_string(i)), "text", node.auth[i]);
    lyd_node *certificate = add_entry(certificates_, "certificate", node.certificate.id);
    add_leaf(certificate, "common_name", node.certificate.common_name);
    add_leaf(certificate, "certificate", node.certificate.certificate);
    add_leaf(certificate, "private_key", node.certificate.private_key);
    add_leaf(certificate, "revoke_time", std::to_string(node.certificate.revoke_time));
  }

  CertificateCopy *load_certificate(const char *id) {
    Walk walk(find(certificates_, certificate_.list, id));
    auto *out = static_cast<CertificateCopy *>(allocate(sizeof(CertificateCopy)));
    out->id = copy_text(id);
    out->common_name = walk.text(certificate_.leaves[0]);
    out->certificate = walk.text(certificate_.leaves[1]);
    out->private_key = walk.text(certificate_.leaves[2]);
    out->revoke_time = walk.value(certificate_.leaves[3]).int32;
    return out;
  }

  void load_rest(Walk &walk, NodeCopy &node) {
    walk.items(interface_.list, node.interfaces, [&](InterfaceCopy &out, const lyd_node *entry) {
      Walk in(entry);
      out.node_id = copy_text(node.id);
      out.id = in.text(interface_.leaves[0]);
      out.name = in.text(interface_.leaves[1]);
      out.ipv4_address = in.text(interface_.leaves[2]);
      out.ipv6_address = in.text(interface_.leaves[3]);
    });
    walk.items(user_.list, node.users, [&](UserCopy &out, const lyd_node *entry) {
      Walk user(entry);
      out.username = user.text(user_.leaves[0]);
      out.description = user.text(user_.leaves[1]);
      out.disabled = user.value(user_.leaves[2]).int32;
      user.texts(user_.leaves[3], out.groups);
    });
    walk.items(group_.list, node.groups, [&](GroupCopy &out, const lyd_node *entry) {
      Walk group(entry);
      out.groupname = group.text(group_.leaves[0]);
      out.description = group.text(group_.leaves[1]);
      out.system = group.value(group_.leaves[2]).boolean;
      group.texts(group_.leaves[3], out.roles);
    });
    node.use_remote_groups = walk.value(node_.leaves[kNodeTexts + 3]).boolean;
    std::size_t position = 0;
    walk.run(auth_.list,
             [&](const lyd_node *entry) { node.auth[position++] = Walk(entry).text(auth_.leaves[0]); });
  }

  ly_ctx *context_ = nullptr;
  lys_module *module_ = nullptr;
  lyd_node *nodes_ = nullptr, *certificates_ = nullptr;
  Schema node_, etag_, interface_, user_, group_, auth_, certificate_;
};

}  // namespace

std::unique_ptr<NodeReader> make_libyang(std::span<const Node> nodes, FieldSet set, const std::string &) {
  return std::make_unique<LibyangNodes>(nodes, set);
}

}  // namespace bench
