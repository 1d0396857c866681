// The whole store as JSON text.
//
// An element is an object that names its kind: {"map": {...}}, {"list": [[number, element], ...], "next": n},
// {"string": "x"}, {"integer": 1}, {"boolean": true}, {"blob": "<base64>"}, {"reference": "nodes-1"}. A
// string or reference that is not UTF-8 stands as {"string64": ...} or {"reference64": ...}. A map that lists
// have gone from has "retired": {"<list>": next number}. In keys "~" and bytes that are not UTF-8 are written
// "~" and two hex digits.
#include <twconfig/transfer.h>

#include "base64.hpp"
#include "calls.hpp"
#include "store.hpp"
#include "utf8.hpp"

namespace twcfg {
namespace {

constexpr std::size_t kChunk = 64 * 1024;

class Exporter {
 public:
  Exporter(Store &store, cfg_export_sink sink, void *context)
      : store_(store), sink_(sink), context_(context) {}

  bool run() {
    const Stored root = store_.snapshot->get(kRootKey);
    out_ = "{\"format\": \"twconfig export\", \"version\": 1, \"root\":\n";
    if (root) {
      element(packed_record(root.bytes), 0);
    } else {
      out_ += "{\"map\": {}}";
    }
    out_ += "\n}\n";
    flush();
    return !damaged_ && !ended_;
  }
  bool damaged() const { return damaged_; }

 private:
  void flush() {
    if (!ended_ && !out_.empty()) ended_ = sink_(context_, out_.data(), out_.size()) == 0;
    ::explicit_bzero(out_.data(), out_.size());
    out_.clear();
  }

  void text(std::string_view value) {
    static constexpr char kHex[] = "0123456789abcdef";
    out_ += '"';
    for (const char c : value) {
      const auto byte = static_cast<unsigned char>(c);
      if (c == '"' || c == '\\') {
        out_ += '\\';
        out_ += c;
      } else if (byte < 0x20 || byte == 0x7f) {
        out_ += "\\u00";
        out_ += kHex[byte >> 4];
        out_ += kHex[byte & 15];
      } else {
        out_ += c;
      }
    }
    out_ += '"';
  }

  void bytes(const char *kind, std::string_view value) {
    const bool plain = is_utf8(value);
    out_ += std::string("{\"") + kind + (plain ? "\": " : "64\": ");
    text(plain ? std::string(value) : to_base64(value));
    out_ += '}';
  }

  void element(const Packed &node, int depth) {
    if (out_.size() > kChunk) flush();
    if (depth > kMaxDepth || ended_) {
      damaged_ = damaged_ || !ended_;
      return;
    }
    const cfg_value value = value_of(node);
    const std::string_view data(value.data, value.length);
    switch (value.kind) {
      case CFG_MAP:
        return map(node, depth);
      case CFG_LIST:
        return list(node, depth);
      case CFG_STRING:
        return bytes("string", data);
      case CFG_REFERENCE:
        return bytes("reference", data);
      case CFG_INT:
        out_ += "{\"integer\": " + std::to_string(value.number) + '}';
        return;
      case CFG_BOOL:
        out_ += value.number != 0 ? "{\"boolean\": true}" : "{\"boolean\": false}";
        return;
      case CFG_BLOB:
        out_ += "{\"blob\": \"" + to_base64(data) + "\"}";
        return;
      case CFG_NONE:
        damaged_ = true;
    }
  }

  void map(const Packed &node, int depth) {
    const PackedMap packed(node, store_.shapes, *store_.snapshot);
    if (!packed) {
      damaged_ = true;
      return;
    }
    out_ += "{\"map\": {";
    for (std::uint32_t i = 0; i < packed.count() && !ended_; ++i) {
      if (i > 0) out_ += depth < 2 ? ",\n" : ", ";
      text(key_to_utf8(packed.key(i)));
      out_ += ": ";
      element(packed.child(i), depth + 1);
    }
    out_ += '}';
    bool first = true;
    const bool sound = packed.each_retired([&](std::string_view name, std::uint32_t next) {
      out_ += first ? ", \"retired\": {" : ", ";
      first = false;
      text(key_to_utf8(name));
      out_ += ": " + std::to_string(next);
    });
    damaged_ = damaged_ || !sound;
    out_ += first ? "}" : "}}";
  }

  void entry(std::uint32_t number, const Packed &node, bool first, int depth) {
    out_ += first ? "\n[" : ",\n[";
    out_ += std::to_string(number) + ", ";
    element(node, depth + 1);
    out_ += ']';
  }

  void list(const Packed &node, int depth) {
    out_ += "{\"list\": [";
    std::uint32_t next = 1;
    bool first = true;
    if (const std::uint32_t number = distant_list(node)) {
      ListHead head;
      damaged_ = damaged_ || !read_list_head(store_.snapshot->get(head_key(number)).bytes, head);
      next = head.next;
      const auto cursor = store_.snapshot->cursor();
      for (bool more = cursor->seek(make_key(number, 1));
           more && space_of(cursor->key()) == number && !ended_; more = cursor->next()) {
        entry(item_of(cursor->key()), packed_record(cursor->value().bytes), first, depth);
        first = false;
      }
    } else {
      const PackedList packed(node);
      damaged_ = damaged_ || !packed;
      if (packed) next = packed.next();
      for (std::uint32_t i = 0; packed && i < packed.count() && !ended_; ++i) {
        entry(packed.number(i), packed.child(i), first, depth);
        first = false;
      }
    }
    out_ += "], \"next\": " + std::to_string(next) + '}';
  }

  Store &store_;
  cfg_export_sink sink_;
  void *context_;
  std::string out_;
  bool damaged_ = false;
  bool ended_ = false;
};

}  // namespace
}  // namespace twcfg

int cfg_export(cfg *store, cfg_export_sink sink, void *context) noexcept {
  using namespace twcfg;
  if (!given(store, sink)) return 0;
  return guarded(store, 0, [&] {
    if (!store->reading()) return 0;
    Exporter exporter(*store, sink, context);
    if (exporter.run()) return 1;
    if (exporter.damaged())
      return store->fail(CFG_E_CORRUPT, "the store is damaged; the export is not complete");
    return store->fail(CFG_E_IO, "the export was ended by its receiver");
  });
}
