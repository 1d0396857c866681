// A node as a caller of a C library gets it: every text a heap string of its own. All peers load into this
// record; what libtwobject loads into its own record is compared with the same description.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "data/node.hpp"

namespace bench {

struct TextArray {
  char **items = nullptr;
  std::size_t count = 0;
};
struct EtagCopy {
  char *id, *name, *status;
  std::int32_t version;
};
struct InterfaceCopy {
  char *node_id, *id, *name, *ipv4_address, *ipv6_address;
};
struct UserCopy {
  char *username, *description;
  TextArray groups;
  std::int32_t disabled;
};
struct GroupCopy {
  char *groupname, *description;
  TextArray roles;
  std::int32_t system;
};
struct CertificateCopy {
  char *id, *common_name, *certificate, *private_key;
  std::int32_t revoke_time;
};
template <class Item>
struct Array {
  Item *items = nullptr;
  std::size_t count = 0;
};

struct NodeCopy {
  char *id = nullptr;
  std::array<char *, kNodeTexts> texts{};
  std::int32_t approved = 0;
  std::uint32_t ssh_port = 0;
  Array<EtagCopy> etags;
  CertificateCopy *certificate = nullptr;
  Array<InterfaceCopy> interfaces;
  Array<UserCopy> users;
  Array<GroupCopy> groups;
  std::int32_t use_remote_groups = 0;
  std::array<char *, kAuthTexts> auth{};
};

// All allocate with malloc and end the program when there is no memory.
NodeCopy *new_node_copy();
char *copy_text(const char *text);
char *copy_blob(const void *data, std::size_t length);  // with a NUL behind it
void *allocate(std::size_t size);                       // zeroed
template <class Item>
void resize(Array<Item> &array, std::size_t count) {
  array.items = static_cast<Item *>(allocate(count * sizeof(Item)));
  array.count = count;
}
void resize(TextArray &array, std::size_t count);

void free_node_copy(NodeCopy *node);

// Ends the program with a message that names `who` when a value differs from the description or the fields of
// the other set are not left out.
void require_equal(const char *who, const NodeCopy &copy, const Node &node, FieldSet set);

}  // namespace bench
