// The address of the appliance, found by the real ip tool among addresses of a network of the test's own.
#include <fcntl.h>
#include <sched.h>
#include <sys/wait.h>
#include <twobject/net_address.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "network_fixture.hpp"
#include "store_processes/child.hpp"

namespace {

using records::heap_text;

bool write_to(const char *file, const std::string &text) {
  const int descriptor = open(file, O_WRONLY | O_CLOEXEC);
  if (descriptor < 0) return false;
  const bool written = write(descriptor, text.data(), text.size()) == static_cast<ssize_t>(text.size());
  close(descriptor);
  return written;
}

// Gives the calling process an empty network, in which it is root. "" or what stands in the way.
std::string enter_own_network() {
  const uid_t user = geteuid();
  const gid_t group = getegid();
  if (unshare(CLONE_NEWUSER | CLONE_NEWNET) != 0) return std::string("unshare: ") + std::strerror(errno);
  // Without this, the kernel takes no map of groups from a process that is not root.
  write_to("/proc/self/setgroups", "deny");
  if (!write_to("/proc/self/uid_map", "0 " + std::to_string(user) + " 1") ||
      !write_to("/proc/self/gid_map", "0 " + std::to_string(group) + " 1"))
    return std::string("map of users: ") + std::strerror(errno);
  return "";
}

// A shell's function that makes a device of whatever kind the kernel has.
constexpr char add_device[] =
    "device() { for kind in dummy bridge ifb veth; do "
    "ip link add name \"$1\" type $kind 2>/dev/null && ip link set dev \"$1\" up && return; done; return 1; "
    "}\n";

// "" or "exit N".
std::string run(const std::string &commands) {
  const int status = std::system(("set -e\n" + (add_device + commands)).c_str());
  return status == 0 ? "" : "exit " + std::to_string(WEXITSTATUS(status));
}

class RealAddress : public records::NetworkTest {
 protected:
  void SetUp() override {
    NetworkTest::SetUp();
    if (const std::string why = in_own_network("", [] { return ""; }); !why.empty())
      GTEST_SKIP() << "networks of one's own are not allowed here: " << why;
    if (const std::string why = in_own_network("device d0", [] { return ""; }); !why.empty())
      GTEST_SKIP() << "no ip tool, or no kind of device that it can make: " << why;
  }
  // What the body answers in a network that the commands have set up, or why they could not.
  static std::string in_own_network(const std::string &commands, const std::function<std::string()> &body) {
    return trial::in_child([&] {
      std::string why = enter_own_network();
      if (why.empty()) why = run(commands);
      return why.empty() ? body() : why;
    });
  }
  std::string address_with(const std::string &commands) {
    return in_own_network(commands, [this]() -> std::string {
      const records::store_handle own = open();
      const heap_text address(cfg_net_external_address_from_os(own.get()));
      return address ? address.get() : "none";
    });
  }
  void add_all_kinds() {
    add_conn_on("eth0", "default-conn-1", "static");
    add_conn_on("eth1", "default-conn-2", "dhcp");
    add_conn_on("eth2", "a", "static");
    add_conn_on("eth3", "b", "dhcp");
    add_conn_on("eth4", "c", "dhcp");
    commit_and_reopen();
  }
  // A device with an address that carries a label.
  static std::string labelled(const std::string &device, const std::string &label,
                              const std::string &address) {
    return "device '" + device + "'; ip address add " + address + " dev '" + device + "' label '" + label +
           "'\n";
  }
};

TEST_F(RealAddress, EachKindOfConnectionIsFoundByItsLabelAndTheDefaultsLast) {
  add_all_kinds();
  std::string network = labelled("eth0", "eth0:static1", "10.0.0.1/24");
  EXPECT_EQ("10.0.0.1", address_with(network));
  network += labelled("eth1", "eth1:dhcp", "10.0.1.1/24");
  EXPECT_EQ("10.0.1.1", address_with(network));
  network += labelled("eth2", "eth2:static3", "10.0.2.1/24");
  EXPECT_EQ("10.0.2.1", address_with(network));
  network += labelled("eth4", "eth4:dhcp", "10.0.4.1/24");
  EXPECT_EQ("10.0.4.1", address_with(network));
  network += labelled("eth3", "eth3:dhcp", "10.0.3.1/24");
  EXPECT_EQ("10.0.3.1", address_with(network));
}

TEST_F(RealAddress, TheFirstOfALabelsAddressesIsTaken) {
  add_all_kinds();
  EXPECT_EQ("10.0.3.1", address_with(labelled("eth3", "eth3:dhcp", "10.0.3.1/24") +
                                     "ip address add 10.0.9.1/24 dev eth3 label eth3:dhcp"));
}

TEST_F(RealAddress, AnotherConnectionsAddressOnTheSameDeviceIsNotTaken) {
  add_conn_on("eth0", "a", "dhcp");
  commit_and_reopen();
  EXPECT_EQ("10.0.0.2", address_with(labelled("eth0", "eth0:static7", "10.0.0.1/24") +
                                     "ip address add 10.0.1.2/24 dev eth0\n"
                                     "ip address add 10.0.0.2/16 dev eth0 label eth0:dhcp"));
}

TEST_F(RealAddress, ALabelThatJustFillsItsRoomIsTheOneThatTheKernelHas) {
  add_conn_on("elevenchars", "a", "dhcp");
  commit_and_reopen();
  EXPECT_EQ("10.0.0.1", address_with(labelled("elevenchars", "elevenchars:dhc", "10.0.0.1/24")));
}

TEST_F(RealAddress, WithoutALabelledAddressTheOneTowardsTheDefaultGatewayIsTaken) {
  add_all_kinds();
  EXPECT_EQ("192.0.2.9", address_with("device eth0\n"
                                      "ip address add 198.51.100.9/24 dev eth0\n"
                                      "ip address add 192.0.2.9/24 dev eth0\n"
                                      "ip route add default via 192.0.2.1"));
}

TEST_F(RealAddress, ALabelledAddressGoesBeforeTheDefaultRoute) {
  add_all_kinds();
  EXPECT_EQ("10.0.0.1", address_with(labelled("eth0", "eth0:static1", "10.0.0.1/24") +
                                     "ip address add 192.0.2.9/24 dev eth0\n"
                                     "ip route add default via 192.0.2.1"));
}

TEST_F(RealAddress, WithoutLabelAndDefaultRouteThereIsNone) {
  add_all_kinds();
  EXPECT_EQ("none", address_with(""));
  EXPECT_EQ("none", address_with("device eth0; ip address add 192.0.2.9/24 dev eth0"));
}

// The kernel takes such a name, and the address has the very label: only the store's reader refuses it.
TEST_F(RealAddress, ADeviceThatIsCalledLikeACommandIsNotAskedFor) {
  add_conn_on("$(id)", "default-conn-1", "static");
  commit_and_reopen();
  EXPECT_EQ("none", address_with(labelled("$(id)", "$(id):static1", "10.0.0.1/24")));
}

}  // namespace
