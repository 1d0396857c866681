// Our store, filled from the same description as the peers.
#pragma once

#include <twconfig.h>
#include <twobject.h>

#include <memory>
#include <span>
#include <string>

#include "peers/reader.hpp"

namespace bench {

class OwnStore {
 public:
  // Makes the store with its empty collections, its bundles and one setting, or opens the one that is there.
  explicit OwnStore(const std::string &directory);
  ~OwnStore() { cfg_close(handle_); }
  OwnStore(const OwnStore &) = delete;
  OwnStore &operator=(const OwnStore &) = delete;

  // Each is one durable commit.
  void append(std::span<const Node> nodes);
  void change_description(const char *id, const std::string &description);

  // The same as append() for what an enrolment and the node record can write: no etags, no certificate.
  void enroll(std::span<const Node> nodes);

  cfg *handle() { return handle_; }

 private:
  void make_collections();
  void commit(const char *why);

  cfg *handle_ = nullptr;
};

inline constexpr const char *kHostname = "appliance-01.fernhollow.example.net";

// What is left of a node that was added by enroll().
Node enrolled_part(const Node &node);

// The node as the record's getters show it.
NodeCopy *copy_of(cfg_node *node);

// Ends the program when the store refused a call.
void require_store(cfg *store, bool succeeded);

// Reads through libtwobject.
class OwnReader final : public NodeReader {
 public:
  OwnReader(cfg *store, FieldSet set) : store_(store), set_(set) {}
  void load_and_free(const char *id) override { cfg_node_free(cfg_get_node_by_id(store_, id)); }
  void check(const char *who, const Node &node) override;

 private:
  cfg *store_;
  FieldSet set_;
};

}  // namespace bench
