#include <cstring>

#include "store_allocation/cases.hpp"

namespace store_allocation {
namespace {

// What a visitor was shown. Visitors run while memory is refused, so they only add up.
struct Shown {
  int done = 0;
  int entries = 0;
  int64_t sum = 0;

  void add(const char *data, size_t length) {
    for (size_t i = 0; data && i < length; ++i)
      sum = (sum * 31 + static_cast<unsigned char>(data[i])) % 1'000'003;
  }
};
std::string shown(World &, Shown got) {
  return got.done ? std::to_string(got.entries) + " entries, sum " + std::to_string(got.sum) : "";
}

constexpr const char *kKeys[] = {"name", "status", "line", "label", "no such key"};
constexpr cfg_keyset kSet{kKeys, 5};

void add_values(Shown &to, const cfg_value *values) {
  ++to.entries;
  for (size_t i = 0; values && i < kSet.count; ++i) to.add(values[i].data, values[i].length);
}
int visit(void *context, int32_t, const cfg_value *values) {
  add_values(*static_cast<Shown *>(context), values);
  return 1;
}
int visit_entry(void *context, const char *id, const cfg_value *values) {
  auto &to = *static_cast<Shown *>(context);
  to.add(id, id[0] == '{' ? 0 : std::char_traits<char>::length(id));
  add_values(to, values);
  return 1;
}
int end_at_third(void *context, int32_t, const cfg_value *) { return ++*static_cast<int *>(context) < 3; }

// `elem` in every state that it can be met in.
template <class Call, class Words>
void everywhere(EngineKind engine, const char *id, const Call &call, const Words &words) {
  const auto with = [id](World &w) { w.elem = at(w.store, id); };
  sweep(engine, call, words, with);
  sweep(engine, call, words, [with](World &w) {
    with(w);
    edit(w);
  });
  sweep(engine, call, words, [with](World &w) {
    with(w);
    edit(w);
    compete(w);
    EXPECT_EQ(cfg_refresh(w.store), 1);
  });
}

void map_read(EngineKind engine) {
  for (const char *map : {"nodes-2", "nodes-1_ports-1"}) {
    everywhere(
        engine, map,
        [](World &w) {
          Shown got;
          cfg_value values[5];
          got.done = cfg_map_read(w.elem, &kSet, values);
          if (got.done) add_values(got, values);
          return got;
        },
        shown);
  }
}

void child_read(EngineKind engine) {
  static constexpr const char *keys[] = {"port"};
  static constexpr cfg_keyset set{keys, 1};
  everywhere(
      engine, "system",
      [](World &w) {
        Shown got;
        cfg_value value;
        got.done = cfg_child_read(w.elem, "net", &set, &value);
        if (got.done) got.sum = value.number;
        return got;
      },
      shown);
}

void child_scan(EngineKind engine) {
  for (const char *list : {"nodes", "labels"}) {
    everywhere(
        engine, ".",
        [list](World &w) {
          Shown got;
          got.done = cfg_child_scan(w.elem, list, &kSet, visit_entry, &got);
          return got;
        },
        shown);
  }
  everywhere(
      engine, "nodes-1",
      [](World &w) {
        Shown got;
        got.done = cfg_child_scan(w.elem, "ports", &kSet, visit_entry, &got);
        return got;
      },
      shown);
}

void list_scan(EngineKind engine) {
  for (const char *list : {"nodes", "nodes-3.log", "nodes-1.ports"}) {
    everywhere(
        engine, list,
        [](World &w) {
          Shown got;
          got.done = cfg_list_scan(w.elem, &kSet, visit, &got);
          return got;
        },
        shown);
  }
}

void list_find(EngineKind engine) {
  for (const char *list : {"nodes", "nodes-3.log"}) {
    everywhere(
        engine, list,
        [](World &w) {
          int seen = 0;
          return cfg_list_find(w.elem, &kSet, end_at_third, &seen);
        },
        element);
  }
}

void map_has(EngineKind engine) {
  everywhere(
      engine, "nodes-1", [](World &w) { return cfg_map_has(w.elem, "ports"); }, done);
}

void elem_read(EngineKind engine) {
  for (const char *elem : {"nodes-2.name", "nodes-1.ports"}) {
    everywhere(
        engine, elem,
        [](World &w) {
          Shown got;
          cfg_value value{};
          got.done = cfg_elem_read(w.elem, &value);
          got.entries = value.kind;
          got.add(value.data, value.length);
          return got;
        },
        shown);
  }
}

// Reads one key of the root, without a handle for what stands there.
bool read_place(World &w, const char *const *key, cfg_value *place) {
  const cfg_keyset set{key, 1};
  return cfg_map_read(w.elem, &set, place) == 1;
}

void value_read(EngineKind engine) {
  static constexpr const char *system_key[] = {"system"};
  static constexpr const char *keys[] = {"hostname", "net"};
  static constexpr cfg_keyset set{keys, 2};
  everywhere(
      engine, ".",
      [](World &w) {
        Shown got;
        cfg_value place{}, values[2]{};
        got.done = read_place(w, system_key, &place) && cfg_value_read(w.store, &place, &set, values);
        if (got.done) {
          got.entries = values[1].kind;
          got.add(values[0].data, values[0].length);
        }
        return got;
      },
      shown);
}

int visit_value(void *context, const cfg_value *entry) {
  auto *got = static_cast<Shown *>(context);
  ++got->entries;
  got->add(entry->data, entry->length);
  return 1;
}

void value_scan(EngineKind engine) {
  static constexpr const char *labels_key[] = {"labels"};
  everywhere(
      engine, ".",
      [](World &w) {
        Shown got;
        cfg_value place{};
        got.done = read_place(w, labels_key, &place) && cfg_value_scan(w.store, &place, visit_value, &got);
        return got;
      },
      shown);
}

void value_scan_maps(EngineKind engine) {
  static constexpr const char *nodes_key[] = {"nodes"};
  everywhere(
      engine, ".",
      [](World &w) {
        Shown got;
        cfg_value place{};
        const auto take = [](void *context, const cfg_value *values) {
          auto *shown = static_cast<Shown *>(context);
          ++shown->entries;
          if (values != nullptr) add_values(*shown, values);
          return 1;
        };
        got.done =
            read_place(w, nodes_key, &place) && cfg_value_scan_maps(w.store, &place, &kSet, take, &got);
        return got;
      },
      shown);
}

void value_entries(EngineKind engine) {
  static constexpr const char *labels_key[] = {"labels"};
  everywhere(
      engine, ".",
      [](World &w) {
        Shown got;
        cfg_value place{}, entries[8]{};
        const int32_t count =
            read_place(w, labels_key, &place) ? cfg_value_entries(w.store, &place, entries, 8) : -1;
        got.done = count >= 0;
        for (int32_t i = 0; i < count && i < 8; ++i) visit_value(&got, &entries[i]);
        return got;
      },
      shown);
}

void list_ids(EngineKind engine) {
  for (const char *list : {"nodes", "nodes-3.log", "nodes-1.ports"}) {
    everywhere(
        engine, list,
        [](World &w) {
          Shown got;
          const auto take = [](void *context, int32_t, const char *id) {
            auto *shown = static_cast<Shown *>(context);
            ++shown->entries;
            shown->add(id, id == nullptr ? 0 : std::strlen(id));
            return 1;
          };
          got.done = cfg_list_ids(w.elem, take, &got);
          return got;
        },
        shown);
  }
}

const Case rows[] = {
    {"cfg_list_ids", list_ids},           {"cfg_child_read", child_read},
    {"cfg_child_scan", child_scan},       {"cfg_elem_read", elem_read},
    {"cfg_value_entries", value_entries}, {"cfg_list_find", list_find},
    {"cfg_list_scan", list_scan},         {"cfg_map_has", map_has},
    {"cfg_map_read", map_read},           {"cfg_value_read", value_read},
    {"cfg_value_scan", value_scan},       {"cfg_value_scan_maps", value_scan_maps},
};

}  // namespace

const std::span<const Case> read_cases = rows;

}  // namespace store_allocation
