// The form in which the hand-written LMDB store keeps a node: values in a fixed order, texts with a NUL, read
// in place. Nothing can be found without reading past what stands before it, and no field can ever be added:
// this is what a general store is measured against, not an alternative to it.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "data/node_copy.hpp"

namespace bench {

class PackedReader {
 public:
  explicit PackedReader(const void *data) : at_(static_cast<const char *>(data)) {}
  template <class Number>
  Number number() {
    Number value;
    std::memcpy(&value, at_, sizeof value);
    at_ += sizeof value;
    return value;
  }
  // Ends with NUL.
  std::string_view text() {
    const auto length = number<std::uint16_t>();
    const std::string_view text(at_, length);
    at_ += length + 1;
    return text;
  }
  char *text_copy() { return copy_text(text().data()); }
  char *blob_copy() {
    const std::string_view blob = text();
    return copy_blob(blob.data(), blob.size());
  }

 private:
  const char *at_;
};

// Both clear `out` first.
void pack_node(const Node &node, std::string &out);
void pack_certificate(const Certificate &certificate, std::string &out);

// Loads all but the certificate and gives the number of the certificate.
std::uint32_t unpack_node(const void *record, const char *id, FieldSet set, NodeCopy &out);
CertificateCopy *unpack_certificate(const void *record);

}  // namespace bench
