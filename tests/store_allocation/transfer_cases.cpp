#include <sys/socket.h>
#include <unistd.h>

#include <cstring>

#include "store_allocation/cases.hpp"

namespace store_allocation {
namespace {

// ---- The whole store as text ----

struct Text {
  int done = 0;
  int64_t sum = 0;
};
int take_text(void *context, const char *data, size_t length) {
  auto &to = *static_cast<Text *>(context);
  for (size_t i = 0; i < length; ++i)
    to.sum = (to.sum * 31 + static_cast<unsigned char>(data[i])) % 1'000'003;
  return 1;
}

void export_all(EngineKind engine) {
  const auto call = [](World &w) {
    Text got;
    got.done = cfg_export(w.store, take_text, &got);
    return got;
  };
  const auto words = [](World &, Text got) { return got.done ? std::to_string(got.sum) : ""; };
  sweep(engine, call, words);
  sweep(engine, call, words, edit);
}

constexpr char kExport[] =
    R"({"format": "twconfig export", "version": 1, "root": {"map": {"hostname": {"string": "taken from a text"},)"
    R"("count": {"integer": 8}, "nodes": {"list": [[9, {"map": {"name": {"string": "node 9"},)"
    R"("ports": {"list": [[2, {"map": {"label": {"string": "two"}}}]], "next": 3}}}]], "next": 10}},)"
    R"("retired": {"long_gone": 12}}})";

struct Source {
  const char *at;
  size_t left;
};
size_t give_text(void *context, char *buffer, size_t size) {
  auto &from = *static_cast<Source *>(context);
  const size_t length = std::min(size, from.left);
  std::memcpy(buffer, from.at, length);
  from.at += length;
  from.left -= length;
  return length;
}

void import_all(EngineKind engine) {
  const auto call = [](World &w) {
    Source source{kExport, sizeof kExport - 1};
    return cfg_import(w.store, give_text, &source);
  };
  sweep(engine, call, done);
  sweep(engine, call, done, edit);
}

// ---- One value over a socket ----

class Ends {
 public:
  Ends() { EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends_), 0); }
  ~Ends() {
    close(ends_[0]);
    close(ends_[1]);
  }
  Ends(const Ends &) = delete;
  Ends &operator=(const Ends &) = delete;
  int ours() const { return ends_[0]; }
  int theirs() const { return ends_[1]; }

 private:
  int ends_[2]{-1, -1};
};

using Json = std::unique_ptr<json_t, decltype(&json_decref)>;

Json value() {
  return {json_pack("{s:s, s:[i, b]}", "text", "a text, longer than what fits into a string object", "list",
                    3, 1),
          &json_decref};
}

void send(EngineKind) {
  plain_sweep([] {
    const Ends ends;
    const Json sent = value();
    const bool done = with_refusals([&] { return cfg_send(ends.ours(), sent.get()); }) == 1;
    if (done) EXPECT_EQ(json_equal(sent.get(), Json(cfg_receive(ends.theirs()), &json_decref).get()), 1);
    return done;
  });
}

void receive(EngineKind) {
  plain_sweep([] {
    const Ends ends;
    const Json sent = value();
    EXPECT_EQ(cfg_send(ends.ours(), sent.get()), 1);
    const Json received(with_refusals([&] { return cfg_receive(ends.theirs()); }), &json_decref);
    if (received) EXPECT_EQ(json_equal(sent.get(), received.get()), 1);
    return received != nullptr;
  });
}

const Case rows[] = {
    {"cfg_export", export_all},
    {"cfg_import", import_all},
    {"cfg_receive", receive, kPlain},
    {"cfg_send", send, kPlain},
};

}  // namespace

const std::span<const Case> transfer_cases = rows;

TEST(NoMemory, AClaimedLengthCostsNothingBeforeItsBytesCome) {
  const Ends ends;
  ASSERT_EQ(write(ends.theirs(), "\1\0\0\0[1,2,3", 10), 10);  // 16 MiB are to come
  ASSERT_EQ(shutdown(ends.theirs(), SHUT_WR), 0);
  allocation::refuse(LONG_MAX, Behind::granted);
  EXPECT_EQ(cfg_receive(ends.ours()), nullptr);
  allocation::stop_refusing();
  EXPECT_GT(allocation::largest_asked(), 0U);
  EXPECT_LE(allocation::largest_asked(), 128U * 1024);
}

}  // namespace store_allocation
