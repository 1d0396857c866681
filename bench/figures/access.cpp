// Users and groups: loading all users by their list, and what saving costs as groups and members grow.
#include <cstdlib>

#include "figures/figures.hpp"
#include "figures/growth.hpp"
#include "ours/own_store.hpp"
#include "peers/packed_record.hpp"
#include "peers/packed_store.hpp"

namespace bench {
namespace {

constexpr int kUsers = 10'000;
constexpr const char *kGroups[] = {"groups-1", "groups-2"};
constexpr const char *kHash = "$5$Zt0pQ9xLm3vBn7Ka$2eJmT4yPq8sWd1fGhK6lZxCv0bNrUiO5aSdFgHjKlQw";

void free_user(cfg_user *user) { cfg_user_free(user); }
void free_group(cfg_group *group) { cfg_group_free(group); }
template <class Record>
using owned = std::unique_ptr<Record, void (*)(Record *)>;

std::string user_name(int number) { return "operator" + std::to_string(number); }
std::string user_description(int number) { return "Night shift, site " + std::to_string(number % 97); }

// A store of its own with empty lists.
class AccessStore {
 public:
  explicit AccessStore(const std::string &directory)
      : handle_(cfg_open(directory.c_str(), CFG_OPEN_CREATE, nullptr)) {
    if (handle_ == nullptr) throw std::runtime_error("the store cannot be opened");
    for (const char *list : {"users", "groups"})
      require(cfg_add_mapelem(handle_, cfg_root(handle_), list, cfg_new_list(handle_)));
    commit();
  }
  ~AccessStore() { cfg_close(handle_); }
  AccessStore(const AccessStore &) = delete;
  AccessStore &operator=(const AccessStore &) = delete;

  void add_users(int count) {
    for (int i = 1; i <= count; ++i) {
      const owned<cfg_user> user(cfg_user_new(handle_, user_name(i).c_str()), free_user);
      require(cfg_user_set_description(user.get(), user_description(i).c_str()));
      for (const char *group : kGroups) require(cfg_user_add_group(user.get(), group));
      require(cfg_user_save(user.get()));
      // One hash for all: making ten thousand takes minutes and is not what is measured.
      require(cfg_map_set_string(handle_, cfg_get_by_id(handle_, cfg_user_get_uuid(user.get())),
                                 "hashed_password", kHash));
    }
    commit();
  }
  // A committed group with this many members, as a record.
  owned<cfg_group> group_of(int members) {
    owned<cfg_group> group(cfg_group_new(handle_, "group"), free_group);
    for (int i = 1; i <= members; ++i) {
      const owned<cfg_user> user(cfg_user_get_by_id(handle_, ("users-" + std::to_string(i)).c_str()),
                                 free_user);
      require(cfg_group_load_member(group.get(), user.get(), 1) != nullptr);
    }
    require(cfg_group_save(group.get()));
    commit();
    return group;
  }
  // A committed user in this many groups.
  owned<cfg_user> user_in(int groups) {
    owned<cfg_user> user(cfg_user_new(handle_, "user"), free_user);
    for (int i = 1; i <= groups; ++i)
      require(cfg_user_add_group(user.get(), ("groups-" + std::to_string(i)).c_str()));
    require(cfg_user_save(user.get()));
    commit();
    return user;
  }

  void require(bool done) { require_store(handle_, done); }
  cfg *handle() { return handle_; }

 private:
  void commit() { require(cfg_commit(handle_, nullptr)); }

  cfg *handle_;
};

// What a user record holds, read from a hand-packed value.
struct PackedUser {
  char *username, *description, *hash;
  std::int32_t enabled, no_password;
  std::vector<char *> groups;
};

class PackedUsers {
 public:
  explicit PackedUsers(const std::string &directory) : env_(open_lmdb_environment(directory, 1)) {
    MDB_txn *txn = nullptr;
    require_lmdb(mdb_txn_begin(env_, nullptr, 0, &txn));
    require_lmdb(mdb_dbi_open(txn, "users", MDB_CREATE | MDB_INTEGERKEY, &users_));
    for (int i = 1; i <= kUsers; ++i) put(txn, static_cast<std::uint32_t>(i));
    require_lmdb(mdb_txn_commit(txn));
    require_lmdb(mdb_txn_begin(env_, nullptr, MDB_RDONLY, &snapshot_));
  }
  ~PackedUsers() {
    mdb_txn_abort(snapshot_);
    mdb_env_close(env_);
  }
  PackedUsers(const PackedUsers &) = delete;
  PackedUsers &operator=(const PackedUsers &) = delete;

  void load_all() {
    for (std::uint32_t number = 1; number <= kUsers; ++number) {
      MDB_val key{sizeof number, &number}, value{};
      require_lmdb(mdb_get(snapshot_, users_, &key, &value));
      PackedReader in(value.mv_data);
      auto *user = new PackedUser{in.text_copy(),
                                  in.text_copy(),
                                  in.text_copy(),
                                  in.number<std::int32_t>(),
                                  in.number<std::int32_t>(),
                                  {}};
      for (auto left = in.number<std::int32_t>(); left > 0; --left) user->groups.push_back(in.text_copy());
      for (char *text : {user->username, user->description, user->hash}) std::free(text);
      for (char *group : user->groups) std::free(group);
      delete user;
    }
  }

 private:
  static void text(std::string &out, const std::string &value) {
    const auto length = static_cast<std::uint16_t>(value.size());
    out.append(reinterpret_cast<const char *>(&length), sizeof length).append(value).push_back('\0');
  }
  static void number(std::string &out, std::int32_t value) {
    out.append(reinterpret_cast<const char *>(&value), sizeof value);
  }
  void put(MDB_txn *txn, std::uint32_t at) {
    std::string bytes;
    text(bytes, user_name(static_cast<int>(at)));
    text(bytes, user_description(static_cast<int>(at)));
    text(bytes, kHash);
    number(bytes, 1);
    number(bytes, 0);
    number(bytes, 2);
    for (const char *group : kGroups) text(bytes, group);
    MDB_val key{sizeof at, &at}, value{bytes.size(), bytes.data()};
    require_lmdb(mdb_put(txn, users_, &key, &value, MDB_APPEND));
  }

  MDB_env *env_;
  MDB_dbi users_ = 0;
  MDB_txn *snapshot_ = nullptr;
};

void load_by_list(AccessStore &own) {
  cfg_user_list *list = cfg_user_list_new(own.handle());
  const std::int32_t count = cfg_user_list_count(list);
  own.require(count == kUsers);
  for (std::int32_t i = 0; i < count; ++i) {
    cfg_user *user = cfg_user_list_get_user(list, i);
    own.require(user != nullptr && cfg_user_get_groups_count(user) == 2);
    cfg_user_free(user);
  }
  cfg_user_list_free(list);
}

// Saves in an edit that is dropped again: only the save is measured, at three sizes.
template <class Record>
void measure_growth(const std::string &what, AccessStore &own, int (*save)(Record *),
                    owned<Record> (AccessStore::*make)(int), const Settings &settings, Table &table) {
  Contest contest;
  std::vector<owned<Record>> records;
  for (const int size : kGrowthSizes) {
    records.push_back((own.*make)(size));
    contest.enter(
        std::to_string(size),
        [&own, save, record = records.back().get()](std::size_t) { own.require(save(record)); },
        [&own](std::size_t) { cfg_abandon(own.handle()); });
  }
  contest.run(settings.rounds(20), 1);
  cfg_abandon(own.handle());
  limit_growth(what, contest, table, Work::of_its_size);
}

}  // namespace

void measure_access(const Settings &settings, Table &table) {
  AccessStore own(settings.workspace.directory("access"));
  own.add_users(kUsers);
  PackedUsers packed(settings.workspace.directory("packed-users"));
  lock_mapped_files(settings.workspace.path());
  Contest contest;
  contest.enter("ours", [&](std::size_t) { load_by_list(own); });
  contest.enter("LMDB, hand-packed", [&](std::size_t) { packed.load_all(); });
  contest.run(settings.rounds(20), kUsers);
  table.compare("user, all 10000 by their list", contest, "ours", "LMDB, hand-packed", at_most(2),
                Contest::processor);
  measure_growth<cfg_group>("saving a group's members", own, cfg_group_save, &AccessStore::group_of, settings,
                            table);
  measure_growth<cfg_user>("saving a user's groups", own, cfg_user_save, &AccessStore::user_in, settings,
                           table);
}

}  // namespace bench
