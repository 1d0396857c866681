#include "evaluator.hpp"

#include <fmt/format.h>
#include <twconfig/element.h>
#include <twconfig/read.h>

#include <algorithm>
#include <new>

#include "access.hpp"
#include "refusal.hpp"

namespace searchd {

namespace {

// Each handle keeps an index for each key that is searched for; clients choose the keys.
constexpr std::size_t most_indexes = 64;
// Reading so many commits costs more than reading all tags again.
constexpr std::uint64_t most_commits = 10'000;
// The entries that are looked at for their keys, and the keys that are told.
constexpr std::int32_t sampled_entries = 256;
constexpr std::size_t most_fields = 4096;

int take_id(void *context, const cfg_change *change) {
  static_cast<std::vector<std::string> *>(context)->emplace_back(change->id);
  return 1;
}

// A condition on a tag, with the tag values that it is about.
struct resolved {
  bool wanted;  // entries must carry one of the values; otherwise none
  ids values;
};

std::vector<resolved> resolve(const std::vector<tag_condition> &conditions, const tags &defined) {
  std::vector<resolved> all;
  for (const tag_condition &condition : conditions) {
    if (condition.op == CFG_OP_ABSENT) {
      all.push_back({false, defined.values_of(condition.tag)});
      continue;
    }
    ids values = condition.by_id ? defined.values_of(condition.tag)
                                 : defined.values_of(condition.tag, condition.value);
    if (condition.by_id) values = values.contains(condition.value) ? ids{condition.value} : ids{};
    all.push_back({condition.op == CFG_OP_EQUAL, std::move(values)});
  }
  return all;
}

// Why a collection could not be searched.
[[noreturn]] void refuse_collection(const cfg *store) {
  if (cfg_error_code(store) == CFG_E_MEMORY) throw std::bad_alloc();
  throw refusal("there is no such object type");
}

void add_fields(cfg *store, cfg_elem *map, const std::string &front, std::set<std::string> &found) {
  const auto keys = twobject::map_keys(map);
  if (!keys) return;
  for (const char *key : *keys) {
    cfg_elem *elem = cfg_simple_get_mapelem(store, map, key);
    const cfg_kind kind = cfg_elem_kind(elem);
    if (kind == CFG_MAP && front.empty()) add_fields(store, elem, front + key + '.', found);
    if ((kind == CFG_STRING || kind == CFG_REFERENCE) && !is_secret(key) && found.size() < most_fields)
      found.insert(front + key);
  }
}

}  // namespace

// Lets go of the snapshot between requests, so that the store's old pages can be used again.
struct evaluator::parked {
  cfg *store;
  explicit parked(cfg *handle) : store(handle) {}
  ~parked() { cfg_park(store); }
  parked(const parked &) = delete;
  parked &operator=(const parked &) = delete;
};

evaluator::evaluator(std::string path) : path_(std::move(path)) { open(); }

void evaluator::open() {
  cfg_failure failure{};
  store_.reset();
  store_.reset(cfg_open(path_.c_str(), CFG_OPEN_READ_ONLY, &failure));
  if (!store_)
    throw std::runtime_error(fmt::format("the store \"{}\" cannot be opened: {}", path_, failure.text));
  indexed_.clear();
}

void evaluator::refresh() {
  if (!store_) open();
  if (!cfg_refresh(store_.get())) {
    const std::string why = cfg_error_text(store_.get());
    store_.reset();  // the next request begins anew
    forget();
    throw std::runtime_error("the store cannot be read: " + why);
  }
  const std::uint64_t now = cfg_revision(store_.get());
  if (now == revision_) return;
  if (revision_ == 0 || now < revision_ || now - revision_ > most_commits) {
    forget();
    tags_.read(store_.get());
  } else {
    apply_commits(revision_ + 1, now);
  }
  revision_ = now;
}

void evaluator::forget() {
  revision_ = 0;
  indexes_.clear();
}

void evaluator::apply_commits(std::uint64_t from, std::uint64_t to) {
  std::vector<std::string> changed;
  for (std::uint64_t revision = from; revision <= to; ++revision) {
    if (cfg_visit_commit(store_.get(), revision, take_id, &changed)) continue;
    indexes_.clear();  // no longer in the log
    tags_.read(store_.get());
    return;
  }
  const bool of_tags = std::any_of(changed.begin(), changed.end(), [](const std::string &id) {
    return id.empty() || id == "tags" || id.starts_with("tags.") || id.starts_with("tags_");
  });
  if (of_tags) tags_.read(store_.get());
  for (auto index = indexes_.begin(); index != indexes_.end();) {
    const bool followed = std::all_of(changed.begin(), changed.end(),
                                      [&](const std::string &id) { return index->second.note(id); });
    if (followed) index->second.follow(store_.get());
    index = followed ? std::next(index) : indexes_.erase(index);
  }
}

tag_index &evaluator::index_of(const std::string &collection) {
  const auto known = indexes_.find(collection);
  if (known != indexes_.end()) return known->second;
  tag_index made(collection);
  if (!made.build(store_.get())) refuse_collection(store_.get());
  return indexes_.emplace(collection, std::move(made)).first->second;
}

void evaluator::limit_indexes(const query &wanted) {
  for (const std::string &key : wanted.equal_keys) indexed_.insert(key);
  if (indexed_.size() <= most_indexes) return;
  open();
}

numbers evaluator::search_store(const std::string &collection, const query &wanted) {
  cfg_elem *found = cfg_search(store_.get(), collection.c_str(), wanted.stored.get());
  std::int32_t size = 0;
  if (!cfg_list_size(found, &size)) refuse_collection(store_.get());
  numbers all;
  all.reserve(static_cast<std::size_t>(size));
  for (std::int32_t i = 0; i < size; ++i)
    if (const std::uint32_t entry = entry_number(collection, cfg_get_listelem(found, i)); entry != 0)
      all.push_back(entry);
  return all;
}

numbers evaluator::search(const std::string &collection, const query &wanted) {
  limit_indexes(wanted);
  refresh();
  const parked park(store_.get());
  if (wanted.tags.empty()) return search_store(collection, wanted);

  const std::vector<resolved> conditions = resolve(wanted.tags, tags_);
  const tag_index &index = index_of(collection);
  const auto positive =
      std::find_if(conditions.begin(), conditions.end(), [](const resolved &c) { return c.wanted; });
  // Whichever has an index gives the candidates; everything else is asked about those only.
  const bool by_tag = wanted.equal_keys.empty() && positive != conditions.end();
  numbers found = by_tag ? index.carriers(positive->values) : search_store(collection, wanted);
  std::erase_if(found, [&](std::uint32_t entry) {
    return !std::all_of(conditions.begin(), conditions.end(),
                        [&](const resolved &c) { return index.carries(entry, c.values) == c.wanted; });
  });
  if (by_tag && wanted.stored_count > 0)
    std::erase_if(found, [&](std::uint32_t entry) {
      const std::string id = collection + '-' + std::to_string(entry);
      return !cfg_condition_holds(store_.get(), cfg_get_by_id(store_.get(), id.c_str()), wanted.stored.get());
    });
  return found;
}

std::vector<std::string> evaluator::fields(const std::string &collection) {
  refresh();
  const parked park(store_.get());
  query any;
  any.stored.reset(cfg_new_and_condition());
  if (!any.stored) throw std::bad_alloc();
  const numbers entries = search_store(collection, any);
  std::set<std::string> found;
  bool tagged = false;
  for (std::size_t i = 0; i < entries.size() && i < sampled_entries; ++i) {
    const std::string id = collection + '-' + std::to_string(entries[i]);
    cfg_elem *entry = cfg_get_by_id(store_.get(), id.c_str());
    if (cfg_elem_kind(entry) != CFG_MAP) continue;
    add_fields(store_.get(), entry, "", found);
    tagged = tagged || cfg_map_has(entry, "tags");
  }
  if (tagged)
    for (const std::string &tag : tags_.names()) found.insert("tag:" + tag);
  return {found.begin(), found.end()};
}

}  // namespace searchd
