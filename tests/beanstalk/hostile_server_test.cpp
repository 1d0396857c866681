// Servers that say nonsense, too much, too little or nothing.
#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <utility>

#include "beanstalk/client.hpp"
#include "beanstalk/fake_server.hpp"

namespace queue {
namespace {

const std::string kNul(1, '\0');
const std::string kLong(100'000, 'x');

/** A connection that does not wait long. */
connection impatient(const FakeServer &server) {
  connection made = connect_to(server.port());
  EXPECT_EQ(bs_set_timeout(made.get(), 100), 0);
  return made;
}

/** What a put makes of a reply; afterwards, unless `goes_on`, the connection must be over. */
int64_t put_answered_with(const std::string &reply, Ending ending = Ending::silence, bool goes_on = false) {
  const FakeServer server({{2, reply}}, ending);
  const connection one = impatient(server);
  const int64_t result = put(one, "body");
  if (!goes_on) {
    EXPECT_EQ(bs_delete(one.get(), 1), -ENOTCONN) << reply.substr(0, 40);
  }
  return result;
}

struct Reserved {
  int result;
  int64_t id;
  std::string body;
};
Reserved reserve_answered_with(const std::string &reply, Ending ending = Ending::silence) {
  const FakeServer server({{1, reply}}, ending);
  const connection one = impatient(server);
  bs_job taken{-1, nullptr, 0};
  const int result = bs_reserve(one.get(), 0, &taken);
  Reserved found{result, taken.id, taken.body ? std::string(taken.body, taken.length) : "none"};
  std::free(taken.body);
  return found;
}

TEST(HostileServer, RepliesThatArePutRepliesAreTaken) {
  EXPECT_EQ(put_answered_with("INSERTED 0\r\n", Ending::silence, true), 0);
  EXPECT_EQ(put_answered_with("INSERTED 9223372036854775807\r\n", Ending::silence, true), INT64_MAX);
  EXPECT_EQ(put_answered_with("BURIED 5\r\n", Ending::silence, true), -ENOBUFS);
  EXPECT_EQ(put_answered_with("OUT_OF_MEMORY\r\n", Ending::silence, true), -ENOBUFS);
  EXPECT_EQ(put_answered_with("DRAINING\r\n", Ending::silence, true), -EBUSY);
  EXPECT_EQ(put_answered_with("JOB_TOO_BIG\r\n", Ending::silence, true), -EMSGSIZE);
}

TEST(HostileServer, AReplyThatIsNoneEndsTheConnection) {
  for (const std::string &reply : {std::string("\r\n"),
                                   std::string("INSERTED\r\n"),
                                   std::string("INSERTED \r\n"),
                                   std::string("INSERTED 1 \r\n"),
                                   std::string("INSERTED  1\r\n"),
                                   std::string("INSERTED -1\r\n"),
                                   std::string("INSERTED +1\r\n"),
                                   std::string("INSERTED 1x\r\n"),
                                   std::string("INSERTED 0x1\r\n"),
                                   std::string("INSERTED 1 2\r\n"),
                                   std::string("inserted 1\r\n"),
                                   std::string("INSERTED1\r\n"),
                                   std::string("INSERTED 9223372036854775808\r\n"),
                                   std::string("INSERTED 99999999999999999999999999999999999999\r\n"),
                                   std::string("USING a\r\n"),
                                   std::string("RESERVED 1 4\r\nbody\r\n"),
                                   std::string("BURIED x\r\n"),
                                   std::string("NOT_FOUND x\r\n"),
                                   std::string("BAD_FORMAT\r\n"),
                                   std::string("INTERNAL_ERROR\r\n"),
                                   std::string("UNKNOWN_COMMAND\r\n"),
                                   "INSERTED " + kNul + "1\r\n",
                                   kNul + kNul + "\r\n",
                                   std::string("\xff\xfe\x01\r\n"),
                                   std::string("HTTP/1.1 400 Bad Request\r\n"),
                                   "INSERTED " + kLong + "\r\n",
                                   kLong,
                                   kLong + "\r\n"})
    EXPECT_EQ(put_answered_with(reply), -EPROTO) << reply.substr(0, 40);
}

TEST(HostileServer, SilenceEndsInTime) {
  EXPECT_EQ(put_answered_with(""), -ETIMEDOUT);
  EXPECT_EQ(put_answered_with("INSER"), -ETIMEDOUT);
  EXPECT_EQ(put_answered_with("INSERTED 1"), -ETIMEDOUT);
  EXPECT_EQ(put_answered_with("INSERTED 1\n"), -ETIMEDOUT) << "half a line end is none";
  EXPECT_EQ(put_answered_with("INSERTED 1\r"), -ETIMEDOUT);
}

TEST(HostileServer, AConnectionThatIsClosedIsTold) {
  EXPECT_EQ(put_answered_with("", Ending::close), -ECONNRESET);
  EXPECT_EQ(put_answered_with("INSERTED 1", Ending::close), -ECONNRESET);
}

TEST(HostileServer, AServerThatClosesAtOnceRaisesNoSignal) {
  std::signal(SIGPIPE, SIG_DFL);
  const FakeServer server({}, Ending::close);
  const connection one = impatient(server);
  for (int i = 0; i < 3; ++i) EXPECT_LT(put(one, kLong.substr(0, BS_BODY_MAX)), 0);
}

TEST(HostileServer, AnotherTubeThanTheOneThatWasAskedForIsNoAnswer) {
  const FakeServer server({{1, "USING others\r\n"}}, Ending::silence);
  const connection one = impatient(server);
  EXPECT_EQ(bs_use(one.get(), "ours"), -EPROTO);
}

TEST(HostileServer, AReservedJobComesWholeOrNotAtAll) {
  const auto whole = reserve_answered_with("RESERVED 7 4\r\nbody\r\n");
  EXPECT_EQ(whole.result, 0);
  EXPECT_EQ(whole.id, 7);
  EXPECT_EQ(whole.body, "body");
  const struct {
    std::string reply;
    int result;
  } rows[] = {
      {"RESERVED 7\r\n", -EPROTO},
      {"RESERVED 7 -1\r\n\r\n", -EPROTO},
      {"RESERVED 7 3\r\nbody\r\n", -EPROTO},
      {"RESERVED 7 4\r\nbodyXX", -ETIMEDOUT},
      {"RESERVED 7 4\r\nbody!\r\n", -EPROTO},
      {"RESERVED 7 5\r\nbody\r\n", -ETIMEDOUT},
      {"RESERVED 7 4\r\nbo", -ETIMEDOUT},
      {"RESERVED 7 4\r\n", -ETIMEDOUT},
      {"RESERVED 7 1073741825\r\n", -EPROTO},
      {"RESERVED 7 9223372036854775807\r\n", -EPROTO},
      {"RESERVED 7 18446744073709551615\r\n", -EPROTO},
      {"RESERVED 99999999999999999999 4\r\nbody\r\n", -EPROTO},
      {"RESERVED 7 4 4\r\nbody\r\n", -EPROTO},
      {"FOUND 7 4\r\nbody\r\n", -EPROTO},
      {"INSERTED 7\r\n", -EPROTO},
  };
  for (const auto &[reply, result] : rows) {
    const auto found = reserve_answered_with(reply);
    EXPECT_EQ(found.result, result) << reply;
    EXPECT_EQ(found.id, -1) << reply;
    EXPECT_EQ(found.body, "none") << reply;
  }
}

TEST(HostileServer, AJobThatIsCutShortIsNone) {
  const auto found = reserve_answered_with("RESERVED 7 1000000\r\n" + kLong, Ending::close);
  EXPECT_EQ(found.result, -ECONNRESET);
  EXPECT_EQ(found.id, -1);
}

TEST(HostileServer, AnnouncingMuchCostsNothing) {
  const auto found = reserve_answered_with("RESERVED 7 1073741824\r\n");
  EXPECT_EQ(found.result, -ETIMEDOUT);
  EXPECT_EQ(found.body, "none");
}

TEST(HostileServer, ReservingSaysHowItEnded) {
  EXPECT_EQ(reserve_answered_with("TIMED_OUT\r\n").result, -EAGAIN);
  EXPECT_EQ(reserve_answered_with("DEADLINE_SOON\r\n").result, -EDEADLK);
  EXPECT_EQ(reserve_answered_with("").result, -ETIMEDOUT);
}

TEST(HostileServer, WhatItSaysUnaskedIsNotTakenForLaterAnswers) {
  const FakeServer server({{2, "INSERTED 1\r\nnonsense\r\n"}, {1, "DELETED\r\n"}}, Ending::silence);
  const connection one = impatient(server);
  EXPECT_EQ(put(one, "body"), 1);
  EXPECT_EQ(bs_delete(one.get(), 1), -EPROTO);
}

}  // namespace
}  // namespace queue
