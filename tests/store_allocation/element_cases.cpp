#include <cstdlib>
#include <functional>

#include "store_allocation/cases.hpp"

namespace store_allocation {
namespace {

// Prepares `elem`; the handle has then read what leads to it, and nothing else.
auto with(const char *id) {
  return [id](World &w) { w.elem = at(w.store, id); };
}

// The same, and then the edit has changed around it, so that the call has to find it anew.
auto with_edit(const char *id) {
  return [id](World &w) {
    w.elem = at(w.store, id);
    edit(w);
  };
}

// The same behind a refresh.
auto with_refresh(const char *id) {
  return [id](World &w) {
    w.elem = at(w.store, id);
    compete(w);
    EXPECT_EQ(cfg_refresh(w.store), 1);
  };
}

// In every state that an element can be met in.
template <class Call, class Words>
void everywhere(EngineKind engine, const char *id, const Call &call, const Words &words) {
  sweep(engine, call, words, with(id));
  sweep(engine, call, words, with_edit(id));
  sweep(engine, call, words, with_refresh(id));
}

// ---- Navigation ----

void root(EngineKind engine) {
  sweep(
      engine, [](World &w) { return cfg_root(w.store); }, element);
}

void by_path(EngineKind engine) {
  for (const char *path : {"nodes", "system.net.port", "system.net.a.b"}) {
    const auto call = [path](World &w) { return cfg_get_by_path(w.store, path); };
    sweep(engine, call, element);
    sweep(engine, call, element, edit);
  }
}

void child_by_path(EngineKind engine) {
  everywhere(
      engine, "system", [](World &w) { return cfg_get_child_by_path(w.store, w.elem, "net.port"); }, element);
}

void by_id(EngineKind engine) {
  for (const char *name : {"nodes-6", "nodes-1_ports-1.label", "nodes-3_log-9", "labels-2", "system.net"}) {
    const auto call = [name](World &w) { return cfg_get_by_id(w.store, name); };
    sweep(engine, call, element);
    sweep(engine, call, element, edit);
    sweep(engine, call, element, [name](World &w) {
      with_refresh(name)(w);
      edit(w);
    });
  }
}

// It never fails: what is looked up behind it must not notice it.
void expect_element(EngineKind engine) {
  const auto call = [](World &w) {
    for (int turn = 0; turn < 2; ++turn) cfg_expect(w.store, "nodes-6");
    return cfg_get_by_id(w.store, "nodes-6");
  };
  sweep(engine, call, element);
  sweep(engine, call, element, with("nodes-6"));
}

void by_ids(EngineKind engine) {
  static const char *const ids[] = {"nodes-3", "no such ID", "nodes-1", "labels-1"};
  sweep(
      engine, [](World &w) { return cfg_get_by_ids(w.store, ids, 4); },
      [](World &w, cfg_elem **elems) {
        std::string text;
        for (cfg_elem **elem = elems; elem && *elem; ++elem) text += element(w, *elem);
        std::free(elems);
        return text;
      });
}

void uuid(EngineKind engine) {
  struct Copy {
    int done;
    char *text;
  };
  everywhere(
      engine, "nodes-1_ports-1",
      [](World &w) {
        Copy copy{0, nullptr};
        copy.done = cfg_elem_uuid(w.elem, &copy.text);
        return copy;
      },
      [](World &, Copy copy) { return copy.done ? take(copy.text) : ""; });
}

void parent(EngineKind engine) {
  everywhere(
      engine, "nodes-1_ports-1", [](World &w) { return cfg_get_parent_elem(w.store, w.elem); }, element);
  everywhere(
      engine, "nodes-6", [](World &w) { return cfg_get_parent_elem(w.store, w.elem); }, element);
}

void map_element(EngineKind engine) {
  everywhere(
      engine, "nodes-1", [](World &w) { return cfg_simple_get_mapelem(w.store, w.elem, "ports"); }, element);
}

void map_element_id(EngineKind engine) {
  everywhere(
      engine, "nodes-1", [](World &w) { return cfg_get_mapelem(w.elem, "ports"); }, id);
}

void list_element(EngineKind engine) {
  for (const char *list : {"nodes", "nodes-3.log", "nodes-1.ports"})
    everywhere(
        engine, list, [](World &w) { return cfg_simple_get_listelem(w.store, w.elem, 0); }, element);
  everywhere(
      engine, "nodes", [](World &w) { return cfg_simple_get_listelem(w.store, w.elem, 4); }, element);
}

void list_element_id(EngineKind engine) {
  everywhere(
      engine, "nodes-3.log", [](World &w) { return cfg_get_listelem(w.elem, 3); }, id);
}

void kind(EngineKind engine) {
  everywhere(
      engine, "nodes-1.ports", [](World &w) { return cfg_elem_kind(w.elem); },
      [](World &, cfg_kind kind) { return kind == CFG_NONE ? "" : std::to_string(kind); });
}

void prepare_list(EngineKind engine) {
  everywhere(
      engine, "nodes", [](World &w) { return cfg_get_list(w.store, w.elem); }, done);
}

// ---- Lists ----

struct Number {
  int done;
  int32_t value;
};
std::string number(World &, Number got) { return got.done ? std::to_string(got.value) : ""; }

template <int (*Get)(cfg_elem *, int32_t *)>
Number number_of_elem(World &w) {
  Number got{0, -1};
  got.done = Get(w.elem, &got.value);
  return got;
}

void list_size(EngineKind engine) {
  for (const char *list : {"nodes", "nodes-3.log", "nodes-1.ports"})
    everywhere(engine, list, number_of_elem<cfg_list_size>, number);
}

void future_size(EngineKind engine) {
  for (const char *list : {"nodes", "nodes-1.ports"})
    everywhere(engine, list, number_of_elem<cfg_list_future_size>, number);
}

void future_element(EngineKind engine) {
  for (const char *list : {"nodes", "nodes-1.ports"})
    sweep(
        engine, [](World &w) { return cfg_get_future_listelem(w.elem, 0); }, element, with_edit(list));
}

// A new entry for a list in each state.
template <int (*Append)(cfg *, cfg_elem *, cfg_elem *)>
void append(EngineKind engine) {
  const auto call = [](World &w) { return Append(w.store, w.elem, w.fresh); };
  for (const char *list : {"nodes", "nodes-3.log", "nodes-1.ports", "labels"}) {
    for (const auto &prepare :
         {std::function<void(World &)>(with(list)), std::function<void(World &)>(with_edit(list)),
          std::function<void(World &)>(with_refresh(list))}) {
      sweep(engine, call, done, [&prepare](World &w) {
        prepare(w);
        w.fresh = cfg_new_map(w.store);
        EXPECT_EQ(cfg_map_set_string(w.store, w.fresh, "name", "appended"), 1);
      });
    }
  }
}

// An entry that gets what entries of its list begin with.
void append_with_layout(EngineKind engine) {
  sweep(
      engine, [](World &w) { return cfg_append_future_listelem(w.store, w.elem, w.fresh); }, done,
      [](World &w) {
        cfg_elem *push = append_named(w.store, make_list(w.store, "cfg_push_exec_ctxts"), "a push");
        w.elem = put_list(w.store, push, "nodes");
        w.fresh = cfg_new_map(w.store);
      });
}

void empty_list(EngineKind engine) {
  for (const char *list : {"nodes", "nodes-3.log", "nodes-1.ports", "labels"})
    everywhere(
        engine, list, [](World &w) { return cfg_set_list(w.store, w.elem); }, element);
}

// ---- Maps ----

struct Bytes {
  int done;
  void *data;
  size_t length;
};
std::string bytes(World &, Bytes got) {
  if (!got.done) return "";
  std::string text(static_cast<char *>(got.data), got.length);
  std::free(got.data);
  return "'" + text + "'";
}

void get_string(EngineKind engine) {
  everywhere(
      engine, "nodes-2",
      [](World &w) {
        char *text = nullptr;
        cfg_map_get_string(w.store, w.elem, "name", &text);
        return text;
      },
      [](World &, char *text) { return text ? take(text) : ""; });
}

void get_reference(EngineKind engine) {
  everywhere(
      engine, ".",
      [](World &w) {
        char *text = nullptr;
        cfg_map_get_reference(w.store, w.elem, "first", &text);
        return text;
      },
      [](World &, char *text) { return text ? take(text) : ""; });
}

template <int (*Get)(cfg *, cfg_elem *, const char *, int32_t *)>
void get_number(EngineKind engine, const char *key) {
  everywhere(
      engine, ".",
      [key](World &w) {
        Number got{0, -1};
        got.done = Get(w.store, w.elem, key, &got.value);
        return got;
      },
      number);
}

void get_blob(EngineKind engine) {
  everywhere(
      engine, ".",
      [](World &w) {
        Bytes got{0, nullptr, 0};
        got.done = cfg_map_get_blob(w.store, w.elem, "key", &got.data, &got.length);
        return got;
      },
      bytes);
}

// A key that is there, and one that is not.
template <class Set>
void set_key(EngineKind engine, const Set &set, std::initializer_list<const char *> maps = {"nodes-2"}) {
  for (const char *map : maps) {
    for (const char *key : {"name", "a key that is not there"})
      everywhere(
          engine, map, [&set, key](World &w) { return set(w.store, w.elem, key); }, done);
  }
}

constexpr char kNew[] = "a new text, longer than what fits into a string object";

void set_string(EngineKind engine) {
  const auto set = [](cfg *store, cfg_elem *map, const char *key) {
    return cfg_map_set_string(store, map, key, kNew);
  };
  set_key(engine, set, {".", "system.net", "nodes-2", "nodes-1_ports-1"});
}
void set_int(EngineKind engine) {
  set_key(engine,
          [](cfg *store, cfg_elem *map, const char *key) { return cfg_map_set_int(store, map, key, 4711); });
}
void set_bool(EngineKind engine) {
  set_key(engine,
          [](cfg *store, cfg_elem *map, const char *key) { return cfg_map_set_bool(store, map, key, 1); });
}
void set_blob(EngineKind engine) {
  set_key(engine, [](cfg *store, cfg_elem *map, const char *key) {
    return cfg_map_set_blob(store, map, key, kNew, sizeof kNew);
  });
}
void set_reference(EngineKind engine) {
  set_key(engine, [](cfg *store, cfg_elem *map, const char *key) {
    return cfg_map_set_reference(store, map, key, "nodes-1");
  });
}

void delete_key(EngineKind engine) {
  everywhere(
      engine, "nodes-2", [](World &w) { return cfg_map_delete_key(w.store, w.elem, "name"); }, done);
  everywhere(
      engine, "nodes-3", [](World &w) { return cfg_map_delete_key(w.store, w.elem, "log"); }, done);
  everywhere(
      engine, ".", [](World &w) { return cfg_map_delete_key(w.store, w.elem, "nodes"); }, done);
}

void keys(EngineKind engine) {
  struct Keys {
    int done;
    char **texts;
    int32_t count;
  };
  for (const char *map : {".", "nodes-1"}) {
    everywhere(
        engine, map,
        [](World &w) {
          Keys got{0, nullptr, 0};
          got.done = cfg_map_keys(w.elem, &got.texts, &got.count);
          return got;
        },
        [](World &, Keys got) {
          std::string text;
          for (int32_t i = 0; got.done && i < got.count; ++i) text += take(got.texts[i]) + " ";
          std::free(got.texts);
          return text;
        });
  }
}

void add_element(EngineKind engine) {
  const auto call = [](World &w) { return cfg_add_mapelem(w.store, w.elem, "ports", w.fresh); };
  for (const char *map : {".", "nodes-1", "nodes-5"}) {
    sweep(engine, call, done, [map](World &w) {
      w.fresh = cfg_new_list(w.store);
      EXPECT_NE(append_named(w.store, w.fresh, "first"), nullptr);
      w.elem = at(w.store, map);
    });
  }
}

// ---- Creating and changing ----

template <cfg_elem *(*Make)(cfg *)>
void make(EngineKind engine) {
  const auto call = [](World &w) { return Make(w.store); };
  sweep(engine, call, element);
  sweep(engine, call, element, edit);
}

template <cfg_elem *(*Make)(cfg *, const char *)>
void make_text(EngineKind engine) {
  const auto call = [](World &w) { return Make(w.store, kNew); };
  sweep(engine, call, element);
  sweep(engine, call, element, edit);
}

void replace_string(EngineKind engine) {
  for (const char *text :
       {"hostname", "nodes-2.name", "nodes-1_ports-1.label", "labels-2", "nodes-3_log-9.line"})
    everywhere(
        engine, text, [](World &w) { return cfg_set_string(w.store, w.elem, kNew); }, done);
  sweep(
      engine, [](World &w) { return cfg_set_string(w.store, w.elem, kNew); }, done,
      [](World &w) { w.elem = append_string(w.store, at(w.store, "labels"), "new"); });
}

void replace_blob(EngineKind engine) {
  everywhere(
      engine, "key", [](World &w) { return cfg_set_blob(w.store, w.elem, kNew, sizeof kNew); }, done);
}

void replace_reference(EngineKind engine) {
  everywhere(
      engine, "first", [](World &w) { return cfg_set_reference(w.store, w.elem, "nodes-2"); }, done);
}

void remove(EngineKind engine) {
  for (const char *elem :
       {"nodes-5", "nodes-3_log-9", "nodes-1_ports-1", "labels-2", "nodes", "system.net.port", "nodes-3"})
    everywhere(
        engine, elem, [](World &w) { return cfg_delete_element(w.store, w.elem); }, done);
  sweep(
      engine, [](World &w) { return cfg_delete_element(w.store, w.elem); }, done,
      [](World &w) { w.elem = append_named(w.store, at(w.store, "nodes"), "new"); });
}

// ---- Reading scalar elements ----

template <int (*Get)(cfg_elem *, char **)>
void text_value(EngineKind engine, const char *text) {
  everywhere(
      engine, text,
      [](World &w) {
        char *copy = nullptr;
        Get(w.elem, &copy);
        return copy;
      },
      [](World &, char *copy) { return copy ? take(copy) : ""; });
}

void blob_value(EngineKind engine) {
  everywhere(
      engine, "key",
      [](World &w) {
        Bytes got{0, nullptr, 0};
        got.done = cfg_blob_value(w.elem, &got.data, &got.length);
        return got;
      },
      bytes);
}

const Case rows[] = {
    {"cfg_add_listelem", append<cfg_add_listelem>},
    {"cfg_add_mapelem", add_element},
    {"cfg_append_future_listelem",
     [](EngineKind e) {
       append<cfg_append_future_listelem>(e);
       append_with_layout(e);
     }},
    {"cfg_blob_value", blob_value},
    {"cfg_bool_value", [](EngineKind e) { everywhere(e, "on", number_of_elem<cfg_bool_value>, number); }},
    {"cfg_delete_element", remove},
    {"cfg_elem_kind", kind},
    {"cfg_elem_uuid", uuid},
    {"cfg_get_by_id", by_id},
    {"cfg_expect", expect_element},
    {"cfg_get_by_ids", by_ids},
    {"cfg_get_by_path", by_path},
    {"cfg_get_child_by_path", child_by_path},
    {"cfg_get_future_listelem", future_element},
    {"cfg_get_list", prepare_list},
    {"cfg_get_listelem", list_element_id},
    {"cfg_get_mapelem", map_element_id},
    {"cfg_get_parent_elem", parent},
    {"cfg_int_value", [](EngineKind e) { everywhere(e, "count", number_of_elem<cfg_int_value>, number); }},
    {"cfg_list_future_size", future_size},
    {"cfg_list_size", list_size},
    {"cfg_map_delete_key", delete_key},
    {"cfg_map_get_blob", get_blob},
    {"cfg_map_get_bool", [](EngineKind e) { get_number<cfg_map_get_bool>(e, "on"); }},
    {"cfg_map_get_int", [](EngineKind e) { get_number<cfg_map_get_int>(e, "count"); }},
    {"cfg_map_get_reference", get_reference},
    {"cfg_map_get_string", get_string},
    {"cfg_map_keys", keys},
    {"cfg_map_set_blob", set_blob},
    {"cfg_map_set_bool", set_bool},
    {"cfg_map_set_int", set_int},
    {"cfg_map_set_reference", set_reference},
    {"cfg_map_set_string", set_string},
    {"cfg_new_list", make<cfg_new_list>},
    {"cfg_new_map", make<cfg_new_map>},
    {"cfg_new_reference", make_text<cfg_new_reference>},
    {"cfg_new_string", make_text<cfg_new_string>},
    {"cfg_reference_value", [](EngineKind e) { text_value<cfg_reference_value>(e, "first"); }},
    {"cfg_root", root},
    {"cfg_set_blob", replace_blob},
    {"cfg_set_list", empty_list},
    {"cfg_set_reference", replace_reference},
    {"cfg_set_string", replace_string},
    {"cfg_simple_get_listelem", list_element},
    {"cfg_simple_get_mapelem", map_element},
    {"cfg_string_value", [](EngineKind e) { text_value<cfg_string_value>(e, "hostname"); }},
};

}  // namespace

const std::span<const Case> element_cases = rows;

}  // namespace store_allocation
