// The labels of a "generic" node's serial ports, as the node record and the enrolment record keep them.
#ifndef TW_NODES_PORT_LABELS_HPP
#define TW_NODES_PORT_LABELS_HPP

#include <twconfig/element.h>

#include <vector>

#include "record/text.hpp"

namespace tw {

// The record's port count stands beside the labels, not in them: it comes from the store, and nothing is
// allocated on the word of a stored number. Labels that were never given are simply not there.
class port_labels {
 public:
  static constexpr int32_t max_ports = 65536;

  // Fresh labels "Port 1" to "Port n". False, with nothing changed, above max_ports. May throw.
  bool number(int32_t count);
  // Replaces a label by a copy, the empty one included. `count` is the record's port count. May throw.
  bool set(int32_t count, int32_t index, const char *label);
  const char *get(int32_t count, int32_t index) const noexcept;
  // Takes the first `count` entries of a list of strings; other entries leave a gap. May throw.
  bool load(int32_t count, cfg *store, cfg_elem *list);
  // Puts a new list with one string per label under a key, "" holding the place of a gap. May throw.
  bool save(cfg *store, cfg_elem *map, const char *key) const;

 private:
  std::vector<text> labels_;
};

}  // namespace tw

#endif
