// Labels: what the operating system calls the addresses of connections.
#ifndef TW_NETWORK_LABEL_HPP
#define TW_NETWORK_LABEL_HPP

#include <twobject/net_conn.h>

namespace tw {

// The longest label of the operating system.
inline constexpr int label_length = 15;

// Writes device:label for a connection. False when its interface or device is missing, its mode is unknown, a
// static one's ID has no number, the label does not fit, or the device is not called as devices are.
bool label_of(cfg *store, const cfg_net_conn *conn, char (&label)[label_length + 1]) noexcept;

}  // namespace tw

#endif
