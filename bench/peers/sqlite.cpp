// Nodes in SQLite, normalised, read through prepared statements with the whole file mapped.
#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <stdexcept>
#include <utility>

#include "peers/reader.hpp"

namespace bench {
namespace {

constexpr const char *kSchema = R"(
  PRAGMA page_size = 4096;
  PRAGMA journal_mode = WAL;
  PRAGMA mmap_size = 1073741824;
  PRAGMA cache_size = -262144;
  CREATE TABLE certificates (id INTEGER PRIMARY KEY, common_name TEXT, certificate BLOB, private_key BLOB,
                             revoke_time INTEGER);
  CREATE TABLE nodes (id INTEGER PRIMARY KEY, name TEXT NOT NULL, status TEXT NOT NULL, product TEXT,
                      description TEXT, bundle TEXT, mac_address TEXT, fhvpn_address TEXT, firmware_version TEXT,
                      model TEXT, serial_number TEXT, approved INTEGER, ssh_port INTEGER,
                      certificate INTEGER REFERENCES certificates);
  CREATE TABLE etags (node INTEGER REFERENCES nodes, position INTEGER, id TEXT, name TEXT, status TEXT,
                      version INTEGER, PRIMARY KEY (node, position)) WITHOUT ROWID;
  CREATE TABLE interfaces (node INTEGER REFERENCES nodes, position INTEGER, id TEXT, name TEXT, ipv4_address TEXT,
                           ipv6_address TEXT, PRIMARY KEY (node, position)) WITHOUT ROWID;
  CREATE TABLE users (node INTEGER REFERENCES nodes, position INTEGER, username TEXT, description TEXT,
                      disabled INTEGER, PRIMARY KEY (node, position)) WITHOUT ROWID;
  CREATE TABLE user_groups (node INTEGER, user INTEGER, position INTEGER, name TEXT,
                            PRIMARY KEY (node, user, position)) WITHOUT ROWID;
  CREATE TABLE groups_ (node INTEGER REFERENCES nodes, position INTEGER, groupname TEXT, description TEXT,
                        system INTEGER, PRIMARY KEY (node, position)) WITHOUT ROWID;
  CREATE TABLE group_roles (node INTEGER, group_ INTEGER, position INTEGER, name TEXT,
                            PRIMARY KEY (node, group_, position)) WITHOUT ROWID;
  CREATE TABLE auth (node INTEGER PRIMARY KEY REFERENCES nodes, use_remote_groups INTEGER,
                     t0 TEXT, t1 TEXT, t2 TEXT, t3 TEXT, t4 TEXT, t5 TEXT, t6 TEXT, t7 TEXT, t8 TEXT, t9 TEXT,
                     t10 TEXT, t11 TEXT, t12 TEXT, t13 TEXT, t14 TEXT, t15 TEXT);
)";

class Statement {
 public:
  Statement() = default;
  Statement(sqlite3 *db, const std::string &sql) : db_(db) {
    if (sqlite3_prepare_v3(db, sql.c_str(), -1, SQLITE_PREPARE_PERSISTENT, &statement_, nullptr) != SQLITE_OK)
      throw std::runtime_error(sqlite3_errmsg(db));
  }
  Statement(Statement &&other) noexcept { *this = std::move(other); }
  Statement &operator=(Statement &&other) noexcept {
    std::swap(db_, other.db_);
    std::swap(statement_, other.statement_);
    return *this;
  }
  ~Statement() { sqlite3_finalize(statement_); }

  Statement &bind(int index, std::int64_t number) {
    return check(sqlite3_bind_int64(statement_, index, number));
  }
  Statement &bind(int index, const std::string &text) {
    return check(
        sqlite3_bind_text(statement_, index, text.data(), static_cast<int>(text.size()), SQLITE_STATIC));
  }
  bool step() {
    const int code = sqlite3_step(statement_);
    if (code != SQLITE_ROW && code != SQLITE_DONE) throw std::runtime_error(sqlite3_errmsg(db_));
    return code == SQLITE_ROW;
  }
  void run() {
    step();
    reset();
  }
  void reset() { sqlite3_reset(statement_); }

  char *text(int column) {
    return copy_text(reinterpret_cast<const char *>(sqlite3_column_text(statement_, column)));
  }
  char *blob(int column) {
    const void *data = sqlite3_column_blob(statement_, column);
    return copy_blob(data, static_cast<std::size_t>(sqlite3_column_bytes(statement_, column)));
  }
  std::int32_t number(int column) { return sqlite3_column_int(statement_, column); }

 private:
  Statement &check(int code) {
    if (code != SQLITE_OK) throw std::runtime_error(sqlite3_errmsg(db_));
    return *this;
  }
  sqlite3 *db_ = nullptr;
  sqlite3_stmt *statement_ = nullptr;
};

std::string insert(const char *table, int columns) {
  std::string sql = std::string("INSERT INTO ") + table + " VALUES (?";
  for (int i = 1; i < columns; ++i) sql += ",?";
  return sql + ")";
}

// Rows of one table for one node: their number is not known before they are read.
template <class Item, class Fill>
void read_rows(Statement &select, Array<Item> &out, Fill fill) {
  std::array<Item, 16> rows{};
  std::size_t count = 0;
  while (count < rows.size() && select.step()) fill(rows[count++]);
  select.reset();
  resize(out, count);
  std::copy_n(rows.begin(), count, out.items);
}

class SqliteNodes final : public CopyingReader {
 public:
  SqliteNodes(std::span<const Node> nodes, FieldSet set, const std::string &directory) : CopyingReader(set) {
    if (sqlite3_open((directory + "/nodes.sqlite").c_str(), &db_) != SQLITE_OK)
      throw std::runtime_error(sqlite3_errmsg(db_));
    execute(kSchema);
    execute("BEGIN");
    fill(nodes);
    execute("COMMIT; PRAGMA wal_checkpoint(TRUNCATE); ANALYZE;");
    prepare();
    execute("BEGIN");
  }
  ~SqliteNodes() override {
    for (Statement *statement : {&node_, &certificate_, &etags_, &interfaces_, &users_, &user_groups_,
                                 &groups_, &group_roles_, &auth_})
      *statement = Statement();
    sqlite3_close(db_);
  }
  SqliteNodes(const SqliteNodes &) = delete;
  SqliteNodes &operator=(const SqliteNodes &) = delete;

 protected:
  NodeCopy *load(const char *id) override {
    const std::uint32_t number = number_of(id);
    NodeCopy *node = new_node_copy();
    node->id = copy_text(id);
    if (!node_.bind(1, number).step()) throw std::runtime_error("SQLite has no such node");
    for (std::size_t i = 0; i < kNodeTexts; ++i) node->texts[i] = node_.text(static_cast<int>(i));
    node->approved = node_.number(kNodeTexts);
    node->ssh_port = static_cast<std::uint32_t>(node_.number(kNodeTexts + 1));
    const std::int32_t certificate = node_.number(kNodeTexts + 2);
    node_.reset();
    read_rows(etags_.bind(1, number), node->etags, [&](EtagCopy &etag) {
      etag = {etags_.text(0), etags_.text(1), etags_.text(2), etags_.number(3)};
    });
    node->certificate = load_certificate(certificate);
    if (whole()) load_rest(number, *node);
    return node;
  }

 private:
  void execute(const char *sql) {
    if (sqlite3_exec(db_, sql, nullptr, nullptr, nullptr) != SQLITE_OK)
      throw std::runtime_error(sqlite3_errmsg(db_));
  }

  void prepare() {
    std::string columns;
    for (const char *key : kNodeKeys) columns += std::string(key) + ", ";
    node_ = {db_, "SELECT " + columns + "approved, ssh_port, certificate FROM nodes WHERE id = ?"};
    certificate_ = {
        db_, "SELECT common_name, certificate, private_key, revoke_time FROM certificates WHERE id = ?"};
    etags_ = {db_, "SELECT id, name, status, version FROM etags WHERE node = ? ORDER BY position"};
    interfaces_ = {
        db_, "SELECT id, name, ipv4_address, ipv6_address FROM interfaces WHERE node = ? ORDER BY position"};
    users_ = {db_, "SELECT username, description, disabled FROM users WHERE node = ? ORDER BY position"};
    user_groups_ = {db_, "SELECT name FROM user_groups WHERE node = ? AND user = ? ORDER BY position"};
    groups_ = {db_, "SELECT groupname, description, system FROM groups_ WHERE node = ? ORDER BY position"};
    group_roles_ = {db_, "SELECT name FROM group_roles WHERE node = ? AND group_ = ? ORDER BY position"};
    auth_ = {db_, "SELECT * FROM auth WHERE node = ?"};
  }

  void fill(std::span<const Node> nodes) {
    Statement node_row(db_, insert("nodes", kNodeTexts + 4)), certificate_row(db_, insert("certificates", 5)),
        etag_row(db_, insert("etags", 6)), interface_row(db_, insert("interfaces", 6)),
        user_row(db_, insert("users", 5)), user_group_row(db_, insert("user_groups", 4)),
        group_row(db_, insert("groups_", 5)), group_role_row(db_, insert("group_roles", 4)),
        auth_row(db_, insert("auth", kAuthTexts + 2));
    for (const Node &node : nodes) {
      const std::uint32_t certificate = number_of(node.certificate.id.c_str());
      certificate_row.bind(1, certificate).bind(2, node.certificate.common_name);
      certificate_row.bind(3, node.certificate.certificate).bind(4, node.certificate.private_key);
      certificate_row.bind(5, node.certificate.revoke_time).run();
      node_row.bind(1, node.number);
      for (std::size_t i = 0; i < kNodeTexts; ++i) node_row.bind(static_cast<int>(i) + 2, node.texts[i]);
      node_row.bind(kNodeTexts + 2, node.approved).bind(kNodeTexts + 3, node.ssh_port);
      node_row.bind(kNodeTexts + 4, certificate).run();
      std::int64_t position = 0;
      for (const Etag &etag : node.etags)
        etag_row.bind(1, node.number)
            .bind(2, position++)
            .bind(3, etag.id)
            .bind(4, etag.name)
            .bind(5, etag.status)
            .bind(6, etag.version)
            .run();
      position = 0;
      for (const Interface &in : node.interfaces)
        interface_row.bind(1, node.number)
            .bind(2, position++)
            .bind(3, in.id)
            .bind(4, in.name)
            .bind(5, in.ipv4_address)
            .bind(6, in.ipv6_address)
            .run();
      position = 0;
      for (const User &user : node.users) {
        user_row.bind(1, node.number)
            .bind(2, position)
            .bind(3, user.username)
            .bind(4, user.description)
            .bind(5, user.disabled)
            .run();
        insert_texts(user_group_row, node.number, position++, user.groups);
      }
      position = 0;
      for (const Group &group : node.groups) {
        group_row.bind(1, node.number)
            .bind(2, position)
            .bind(3, group.groupname)
            .bind(4, group.description)
            .bind(5, group.system)
            .run();
        insert_texts(group_role_row, node.number, position++, group.roles);
      }
      auth_row.bind(1, node.number).bind(2, node.use_remote_groups);
      for (std::size_t i = 0; i < kAuthTexts; ++i) auth_row.bind(static_cast<int>(i) + 3, node.auth[i]);
      auth_row.run();
    }
  }

  static void insert_texts(Statement &row, std::int64_t node, std::int64_t owner,
                           const std::vector<std::string> &texts) {
    std::int64_t position = 0;
    for (const std::string &text : texts)
      row.bind(1, node).bind(2, owner).bind(3, position++).bind(4, text).run();
  }

  CertificateCopy *load_certificate(std::int32_t number) {
    const std::string id = "certificates-" + std::to_string(number);
    auto *out = static_cast<CertificateCopy *>(allocate(sizeof(CertificateCopy)));
    if (!certificate_.bind(1, number).step()) throw std::runtime_error("SQLite has no such certificate");
    *out = {copy_text(id.c_str()), certificate_.text(0), certificate_.blob(1), certificate_.blob(2),
            certificate_.number(3)};
    certificate_.reset();
    return out;
  }

  void load_rest(std::uint32_t number, NodeCopy &node) {
    read_rows(interfaces_.bind(1, number), node.interfaces, [&](InterfaceCopy &in) {
      in = {copy_text(node.id), interfaces_.text(0), interfaces_.text(1), interfaces_.text(2),
            interfaces_.text(3)};
    });
    read_rows(users_.bind(1, number), node.users, [&](UserCopy &user) {
      user = {users_.text(0), users_.text(1), {}, users_.number(2)};
    });
    for (std::size_t i = 0; i < node.users.count; ++i)
      load_texts(user_groups_, number, i, node.users.items[i].groups);
    read_rows(groups_.bind(1, number), node.groups, [&](GroupCopy &group) {
      group = {groups_.text(0), groups_.text(1), {}, groups_.number(2)};
    });
    for (std::size_t i = 0; i < node.groups.count; ++i)
      load_texts(group_roles_, number, i, node.groups.items[i].roles);
    if (!auth_.bind(1, number).step()) throw std::runtime_error("SQLite has no such node");
    node.use_remote_groups = auth_.number(1);
    for (std::size_t i = 0; i < kAuthTexts; ++i) node.auth[i] = auth_.text(static_cast<int>(i) + 2);
    auth_.reset();
  }

  static void load_texts(Statement &select, std::uint32_t node, std::size_t owner, TextArray &out) {
    Array<char *> texts;
    select.bind(1, node).bind(2, static_cast<std::int64_t>(owner));
    read_rows(select, texts, [&](char *&text) { text = select.text(0); });
    out = {texts.items, texts.count};
  }

  sqlite3 *db_ = nullptr;
  Statement node_, certificate_, etags_, interfaces_, users_, user_groups_, groups_, group_roles_, auth_;
};

}  // namespace

std::unique_ptr<NodeReader> make_sqlite(std::span<const Node> nodes, FieldSet set,
                                        const std::string &directory) {
  return std::make_unique<SqliteNodes>(nodes, set, directory);
}

}  // namespace bench
