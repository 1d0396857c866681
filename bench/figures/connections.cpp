// Listing all connections with their live status: through the library, which takes one state of the daemon
// for each; with each live value asked for by itself; and raw reads of the same records from hand-packed LMDB
// ones.
#include <twinfod.h>

#include <array>
#include <cstdlib>
#include <stdexcept>

#include "figures/figures.hpp"
#include "ours/own_store.hpp"
#include "peers/packed_record.hpp"
#include "peers/packed_store.hpp"

namespace bench {
namespace {

constexpr int kConns = 1'000;
constexpr const char *kReloading = "conman.internal.reloading";
constexpr const char *kStatus = "running up";
constexpr const char *kConnKeys[] = {"name", "description", "role", "mode"};
constexpr const char *kDhcpKeys[] = {"vendor_class", "udhcpc_script"};
constexpr const char *kPhysifKeys[] = {"name", "device", "description", "media"};
constexpr const char *kLeaseItems[] = {"ip", "subnet", "router", "dns"};
constexpr std::size_t kLiveValues = 2 + std::size(kLeaseItems);

std::string device_of(int number) { return "eth" + std::to_string(number); }
std::string conn_name(int number) { return "uplink-" + std::to_string(number); }
std::string status_key(const std::string &name) { return "conman.network-local-conn-" + name + ".status"; }
std::string lease_key(const std::string &device, const char *item) { return "udhcpc." + device + "." + item; }

// What stands under a key of a connection or an interface, and in an item of its lease.
std::string text_of(const std::string &key, int number) {
  if (key == "role") return "lan";
  if (key == "mode") return "dhcp";
  if (key == "media") return "ethernet";
  if (key == "device") return device_of(number);
  if (key == "name") return conn_name(number);
  return "the " + key + " of number " + std::to_string(number);
}

using Texts = std::vector<std::string>;

// What a listing shows of one connection.
Texts expected(int number) {
  Texts texts;
  for (const char *key : kConnKeys) texts.push_back(text_of(key, number));
  for (const char *key : kDhcpKeys) texts.push_back(text_of(key, number));
  for (const char *item : kLeaseItems) texts.push_back(text_of(item, number));
  return texts;
}

// A store of its own with connections by DHCP, each on an interface of its own.
class ConnStore {
 public:
  explicit ConnStore(const std::string &directory)
      : handle_(cfg_open(directory.c_str(), CFG_OPEN_CREATE, nullptr)) {
    if (handle_ == nullptr) throw std::runtime_error("the store cannot be opened");
    cfg_elem *net = add_map(add_map(cfg_root(handle_), "system"), "net");
    cfg_elem *physifs = add_list(net, "physifs"), *conns = add_list(net, "conns");
    for (int i = 1; i <= kConns; ++i) {
      cfg_elem *physif = add_entry(physifs);
      set_texts(physif, kPhysifKeys, i);
      require(cfg_map_set_bool(handle_, physif, "enabled", 1));
      require(cfg_map_set_int(handle_, physif, "mtu", 1500));
      require(cfg_map_set_string(handle_, add_map(physif, "ethernet"), "link_speed", "auto"));
      cfg_elem *conn = add_entry(conns);
      set_texts(conn, kConnKeys, i);
      set_texts(add_map(conn, "dhcp"), kDhcpKeys, i);
      require(cfg_map_set_bool(handle_, conn, "enabled", 1));
      require(cfg_map_set_reference(handle_, conn, "physif", reinterpret_cast<const char *>(physif)));
    }
    require(cfg_commit(handle_, nullptr));
  }
  ~ConnStore() { cfg_close(handle_); }
  ConnStore(const ConnStore &) = delete;
  ConnStore &operator=(const ConnStore &) = delete;

  // The connection of a number, which counts from 1.
  cfg_net_conn *load(int number) {
    cfg_net_conn *conn = cfg_get_net_conn_by_index(handle_, number - 1);
    require(conn != nullptr);
    return conn;
  }
  cfg *handle() { return handle_; }

 private:
  void require(bool done) { require_store(handle_, done); }
  cfg_elem *attach(cfg_elem *map, const char *key, cfg_elem *child) {
    require(cfg_add_mapelem(handle_, map, key, child));
    return child;
  }
  cfg_elem *add_map(cfg_elem *map, const char *key) { return attach(map, key, cfg_new_map(handle_)); }
  cfg_elem *add_list(cfg_elem *map, const char *key) { return attach(map, key, cfg_new_list(handle_)); }
  cfg_elem *add_entry(cfg_elem *list) {
    cfg_elem *entry = cfg_new_map(handle_);
    require(cfg_append_future_listelem(handle_, list, entry));
    return entry;
  }
  template <std::size_t N>
  void set_texts(cfg_elem *map, const char *const (&keys)[N], int number) {
    for (const char *key : keys) require(cfg_map_set_string(handle_, map, key, text_of(key, number).c_str()));
  }

  cfg *handle_;
};

void publish(const std::string &key, const std::string &text) {
  if (infod_push_text(key.c_str(), text.c_str(), INFOD_KIND_STATUS) != 0)
    throw std::runtime_error("the live state cannot be published");
}

// The live state of all connections, with white space around the values as DHCP clients leave it.
void publish_all() {
  publish(kReloading, "false");
  for (int i = 1; i <= kConns; ++i) {
    publish(status_key(conn_name(i)), kStatus);
    for (const char *item : kLeaseItems) publish(lease_key(device_of(i), item), text_of(item, i) + "\n");
  }
}

// Ours: what the first getter of the live status reads, and the others show.
Texts by_the_library(ConnStore &store, int number, bool show) {
  cfg_net_conn *conn = store.load(number);
  const bool complete = cfg_net_conn_runtime_get_status(conn) == CFG_NET_CONN_RUNNING &&
                        cfg_net_conn_runtime_get_last_status_change(conn) > 0 &&
                        cfg_net_conn_runtime_get_dhcp_dns(conn) != nullptr;
  Texts texts;
  if (show) {
    texts = {cfg_net_conn_get_name(conn),
             cfg_net_conn_get_description(conn),
             cfg_net_conn_role_to_string(cfg_net_conn_get_role(conn)),
             cfg_net_conn_mode_to_string(cfg_net_conn_get_mode(conn)),
             cfg_net_conn_get_dhcp_vendor_class(conn),
             cfg_net_conn_get_dhcp_udhcpc_script(conn),
             cfg_net_conn_runtime_get_dhcp_address(conn),
             cfg_net_conn_runtime_get_dhcp_netmask(conn),
             cfg_net_conn_runtime_get_dhcp_gateway(conn),
             cfg_net_conn_runtime_get_dhcp_dns(conn)};
  }
  cfg_net_conn_free(conn);
  if (!complete) throw std::runtime_error("a connection's live status is not read");
  return texts;
}

// The heap copies of a connection's live values, in the order in which they are asked for.
using LiveValues = std::array<char *, kLiveValues>;
void free_values(LiveValues &values) {
  for (char *value : values) std::free(value);
}

char *ask(const std::string &key) {
  char *text = nullptr;
  std::int64_t time_ms = 0;
  if (infod_get_extended(key.c_str(), &text, &time_ms) != 0) throw std::runtime_error("no value of " + key);
  return text;
}

// The same through the library's records, but each live value asked for by itself, in a state of its own.
LiveValues one_by_one(ConnStore &store, int number) {
  cfg_net_conn *conn = store.load(number);
  LiveValues values{};
  std::size_t next = 0;
  values[next++] = ask(kReloading);
  values[next++] = ask(status_key(cfg_net_conn_get_name(conn)));
  cfg_net_physif *physif = cfg_get_net_physif_by_net_conn(store.handle(), conn);
  const std::string device = cfg_net_physif_get_device(physif);
  for (const char *item : kLeaseItems) values[next++] = ask(lease_key(device, item));
  cfg_net_physif_free(physif);
  cfg_net_conn_free(conn);
  return values;
}

// The same records, hand-packed, with the live values in a table of their own. One snapshot serves a listing.
class PackedConns {
 public:
  explicit PackedConns(const std::string &directory) : env_(open_lmdb_environment(directory, 3)) {
    MDB_txn *txn = nullptr;
    require_lmdb(mdb_txn_begin(env_, nullptr, 0, &txn));
    require_lmdb(mdb_dbi_open(txn, "conns", MDB_CREATE | MDB_INTEGERKEY, &conns_));
    require_lmdb(mdb_dbi_open(txn, "physifs", MDB_CREATE | MDB_INTEGERKEY, &physifs_));
    require_lmdb(mdb_dbi_open(txn, "live", MDB_CREATE, &live_));
    put_live(txn, kReloading, "false");
    for (int i = 1; i <= kConns; ++i) put(txn, i);
    require_lmdb(mdb_txn_commit(txn));
    require_lmdb(mdb_txn_begin(env_, nullptr, MDB_RDONLY, &snapshot_));
  }
  ~PackedConns() {
    mdb_txn_abort(snapshot_);
    mdb_env_close(env_);
  }
  PackedConns(const PackedConns &) = delete;
  PackedConns &operator=(const PackedConns &) = delete;

  // Live values are to be new ones.
  void begin_listing() {
    mdb_txn_reset(snapshot_);
    require_lmdb(mdb_txn_renew(snapshot_));
  }

  static constexpr std::size_t kTexts = 1 + std::size(kConnKeys) + std::size(kDhcpKeys);
  struct Conn {
    std::array<char *, kTexts> texts;  // the ID of the interface, then what its keys hold
    std::int32_t enabled;
    LiveValues live;
  };
  Conn load(int number) {
    PackedReader in(find(conns_, number));
    Conn conn{};
    for (char *&text : conn.texts) text = in.text_copy();
    conn.enabled = in.number<std::int32_t>();
    std::size_t next = 0;
    conn.live[next++] = live(kReloading);
    conn.live[next++] = live(status_key(conn.texts[1]));
    const auto physif = load_physif(number);
    const std::string device = physif[1];
    for (const char *item : kLeaseItems) conn.live[next++] = live(lease_key(device, item));
    for (char *text : physif) std::free(text);
    return conn;
  }
  static void free(Conn &conn) {
    for (char *text : conn.texts) std::free(text);
    free_values(conn.live);
  }

 private:
  static constexpr std::size_t kPhysifTexts = std::size(kPhysifKeys) + 1;

  std::array<char *, kPhysifTexts> load_physif(int number) {
    PackedReader in(find(physifs_, number));
    std::array<char *, kPhysifTexts> texts{};
    for (char *&text : texts) text = in.text_copy();
    return texts;
  }
  const void *find(MDB_dbi table, int number) {
    MDB_val key{sizeof number, &number}, value{};
    require_lmdb(mdb_get(snapshot_, table, &key, &value));
    return value.mv_data;
  }
  // A live value is the time of its publishing and the text.
  char *live(const std::string &at) {
    MDB_val key{at.size(), const_cast<char *>(at.data())}, value{};
    require_lmdb(mdb_get(snapshot_, live_, &key, &value));
    return copy_text(static_cast<const char *>(value.mv_data) + sizeof(std::int64_t));
  }

  static void text(std::string &out, const std::string &value) {
    const auto length = static_cast<std::uint16_t>(value.size());
    out.append(reinterpret_cast<const char *>(&length), sizeof length).append(value).push_back('\0');
  }
  static void number(std::string &out, std::int32_t value) {
    out.append(reinterpret_cast<const char *>(&value), sizeof value);
  }
  static void put_record(MDB_txn *txn, MDB_dbi table, int at, std::string &bytes) {
    MDB_val key{sizeof at, &at}, value{bytes.size(), bytes.data()};
    require_lmdb(mdb_put(txn, table, &key, &value, MDB_APPEND));
  }
  void put_live(MDB_txn *txn, std::string at, const std::string &value_text) {
    std::string bytes(sizeof(std::int64_t), '\1');
    bytes.append(value_text.c_str(), value_text.size() + 1);
    MDB_val key{at.size(), at.data()}, value{bytes.size(), bytes.data()};
    require_lmdb(mdb_put(txn, live_, &key, &value, 0));
  }
  void put(MDB_txn *txn, int at) {
    std::string conn, physif;
    text(conn, "system_net_physifs-" + std::to_string(at));
    for (const char *key : kConnKeys) text(conn, text_of(key, at));
    for (const char *key : kDhcpKeys) text(conn, text_of(key, at));
    number(conn, 1);
    put_record(txn, conns_, at, conn);
    for (const char *key : kPhysifKeys) text(physif, text_of(key, at));
    text(physif, "auto");
    number(physif, 1);
    number(physif, 1500);
    put_record(txn, physifs_, at, physif);
    put_live(txn, status_key(conn_name(at)), kStatus);
    for (const char *item : kLeaseItems) put_live(txn, lease_key(device_of(at), item), text_of(item, at));
  }

  MDB_env *env_;
  MDB_dbi conns_ = 0, physifs_ = 0, live_ = 0;
  MDB_txn *snapshot_ = nullptr;
};

// That all three read what was stored and published.
void check(ConnStore &store, PackedConns &packed) {
  for (int i = 1; i <= kConns; ++i) {
    const Texts right = expected(i);
    bool same = by_the_library(store, i, true) == right;
    LiveValues values = one_by_one(store, i);
    PackedConns::Conn conn = packed.load(i);
    same = same && std::string(kStatus) == values[1] && std::string(kStatus) == conn.live[1];
    for (std::size_t k = 1; k < conn.texts.size(); ++k) same = same && right[k - 1] == conn.texts[k];
    for (std::size_t k = 2; k < kLiveValues; ++k) {
      const std::string &item = right[right.size() + k - kLiveValues];
      same = same && item + "\n" == values[k] && item == conn.live[k];
    }
    free_values(values);
    PackedConns::free(conn);
    if (!same)
      throw std::runtime_error("connection " + std::to_string(i) + " is not listed as it was stored");
  }
}

}  // namespace

void measure_connections(const Settings &settings, Table &table) {
  // In memory, where the appliance has it too.
  const Workspace memory("/dev/shm");
  setenv("TW_INFOD_DIR", memory.directory("live").c_str(), 1);
  publish_all();
  ConnStore store(settings.workspace.directory("conns"));
  PackedConns packed(settings.workspace.directory("packed-conns"));
  check(store, packed);
  lock_mapped_files(settings.workspace.path());
  Contest contest;
  contest.enter("ours", [&](std::size_t) {
    for (int i = 1; i <= kConns; ++i) by_the_library(store, i, false);
  });
  contest.enter("each live value by itself", [&](std::size_t) {
    for (int i = 1; i <= kConns; ++i) {
      LiveValues values = one_by_one(store, i);
      free_values(values);
    }
  });
  contest.enter("raw reads, hand-packed", [&](std::size_t) {
    packed.begin_listing();
    for (int i = 1; i <= kConns; ++i) {
      PackedConns::Conn conn = packed.load(i);
      PackedConns::free(conn);
    }
  });
  contest.run(settings.rounds(40), 1);
  for (const char *peer : {"each live value by itself", "raw reads, hand-packed"})
    table.compare("listing 1000 connections with their live status", contest, "ours", peer, {},
                  Contest::processor);
}

}  // namespace bench
