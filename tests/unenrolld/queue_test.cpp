// The work queue that is down, goes away, or is none; and the command line.
#include <chrono>
#include <thread>

#include "beanstalk/fake_server.hpp"
#include "unenrolld/harness.hpp"

namespace unenrolling {
namespace {

template <class Condition>
bool comes_true(Condition condition) {
  for (int i = 0; i < 3000; ++i) {
    if (condition()) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return false;
}

int count(const std::string &text, const std::string &part) {
  int found = 0;
  for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++found;
  return found;
}

TEST_F(UnenrolldTest, ItWaitsForAQueueThatIsDownAndSaysSoOnce) {
  const std::string node = add_node("rack-1");
  const uint16_t port = server->port();
  server->stop();
  Process worker = start();
  // Three attempts: after one second and after two more.
  ASSERT_TRUE(comes_true([&] { return count(worker.printed(), "no work queue") == 1; }));
  std::this_thread::sleep_for(std::chrono::milliseconds(1500));
  EXPECT_EQ(count(worker.printed(), "no work queue"), 1) << worker.printed();
  server = std::make_unique<queue::Server>(port);
  put_job(node);
  EXPECT_TRUE(comes_true([&] { return !has_node(node); })) << worker.printed();
}

TEST_F(UnenrolldTest, AQueueThatGoesAwayIsFoundAgain) {
  const std::string first = add_node("rack-1"), second = add_node("rack-2");
  Process worker = start();
  put_job(first);
  ASSERT_TRUE(comes_true([&] { return !has_node(first); })) << worker.printed();
  const uint16_t port = server->port();
  server.reset();
  server = std::make_unique<queue::Server>(port);
  put_job(second);
  EXPECT_TRUE(comes_true([&] { return !has_node(second); })) << worker.printed();
  EXPECT_EQ(count(worker.printed(), "the work queue is gone"), 1) << worker.printed();
}

TEST_F(UnenrolldTest, WithoutQueueAWorkerThatWorksOnceFails) {
  server->stop();
  EXPECT_EQ(run_once(), "exit 1");
  EXPECT_NE(output.find("no work queue at 127.0.0.1"), std::string::npos) << output;
}

TEST_F(UnenrolldTest, AServerThatIsNoWorkQueueIsNotBelieved) {
  const std::string node = add_node("rack-1");
  const std::string body = "{\"node_id\": \"" + node + "\"}" + '\0';
  const std::vector<std::vector<queue::Step>> dialogues = {
      {{1, "HTTP/1.1 400 Bad Request\r\n\r\n"}},
      {{1, "WATCHING 2\r\n"}, {1, "WATCHING 1\r\n"}, {1, "RESERVED 1 99999999999\r\n" + body + "\r\n"}},
      {{1, "WATCHING 2\r\n"}, {1, "WATCHING 1\r\n"}, {1, "RESERVED 1 5\r\n" + body + "\r\n"}},
      {{1, "WATCHING 2\r\n"}, {1, "WATCHING 1\r\n"}, {1, "RESERVED 1 1000\r\n" + body}},
  };
  for (const auto &steps : dialogues) {
    const queue::FakeServer fake(steps, queue::Ending::close);
    EXPECT_EQ(run_once({}, {"--port", std::to_string(fake.port())}), "exit 1") << output;
    EXPECT_TRUE(has_node(node));
  }
}

TEST_F(UnenrolldTest, WrongOptionsAreRefused) {
  for (const texts &wrong : {texts{"--port", "0"}, texts{"--port", "65536"}, texts{"--address", "localhost"},
                             texts{"--retry-delay", "0"}, texts{"--nonsense"}, texts{"more"}}) {
    const std::string end = run_once({}, wrong);
    EXPECT_EQ(end.rfind("exit 1", 0), 0U) << end << output;
    EXPECT_NE(end, "exit 1") << "CLI11 has numbers of its own";
  }
}

}  // namespace
}  // namespace unenrolling
