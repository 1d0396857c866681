#include "peers/all.hpp"

namespace bench {

const std::vector<Peer> &peers() {
  static const std::vector<Peer> peers = {
    {"LMDB, hand-packed", "", at_most(1.5), make_packed_lmdb},
#if TW_BENCH_WITH_PROTOBUF
    {"LMDB + protobuf", "", times_faster(2), make_protobuf_lmdb},
    {"LMDB + protobuf, messages kept", "", Target{}, make_kept_protobuf_lmdb},
#else
    {"LMDB + protobuf", "libprotobuf-dev or protobuf-compiler was missing", times_faster(2), nullptr},
#endif
#if TW_BENCH_WITH_SQLITE
    {"SQLite", "", times_faster(5), make_sqlite},
#else
    {"SQLite", "libsqlite3-dev was missing", times_faster(5), nullptr},
#endif
#if TW_BENCH_WITH_LIBYANG
    {"libyang, in memory", "", times_faster(3), make_libyang},
#else
    {"libyang, in memory", "libyang2-dev was missing", times_faster(3), nullptr},
#endif
    {"the strdups alone", "", Target{}, make_strdups},
  };
  return peers;
}

}  // namespace bench
