// The client of the search service: one connection, one request and one reply for each call.
#include <twobject/search.h>

#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <twconfig/transport.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <utility>

#include "record/text.hpp"

namespace {

constexpr char service_path[] = "/tmp/twsearch-server.sock";
constexpr int unix_protocol = 1;  // the family's own number; the kernel takes it like 0
constexpr timeval reply_time{60, 0};

constexpr int no_connection = -1;

struct json_release {
  void operator()(json_t *value) const noexcept { json_decref(value); }
};
using json = std::unique_ptr<json_t, json_release>;

// Only JSON true is success: 1, "true" and a missing member are not.
bool succeeded(const json_t *reply) noexcept { return json_is_true(json_object_get(reply, "result")); }

json receive(int socket) noexcept { return json(cfg_receive(socket)); }

// Says hello in the name of this process. A hello that cannot be sent loses its "data" and is otherwise left
// unreleased, by design.
bool greeted(int socket, const char *client_name) noexcept {
  json hello(json_pack("{s:s, s:{s:s}}", "method", "hello", "data", "client_name", client_name));
  if (!cfg_send(socket, hello.get())) {
    json_object_del(hello.release(), "data");
    return false;
  }
  hello.reset();
  return succeeded(receive(socket).get());
}

// A connection that has passed the hello exchange, or no_connection. Up to the hello a failure leaves the
// descriptor open, by design: it is not given out, and nothing that the process had open is touched.
int connect_and_greet() noexcept {
  // Without a socket the connect below fails.
  const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, unix_protocol);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path, service_path, sizeof service_path);
  // The whole structure is the address, not only the path.
  if (connect(fd, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0) return no_connection;
  if (setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &reply_time, sizeof reply_time) != 0) return no_connection;
  char *formatted = nullptr;
  if (asprintf(&formatted, "%s-%ld", "src/search", static_cast<long>(getpid())) < 1) return no_connection;
  tw::text client_name;
  client_name.adopt(formatted);
  if (greeted(fd, client_name.c_str())) return fd;
  close(fd);
  return no_connection;
}

// Sends a request and reads its reply over a connection, which is closed. A request that did not go out is no
// failure yet: a service that refuses may answer without having read it. Closing our half then tells one that
// still reads that there is nothing to wait for. Without a connection there is no reply, nor is there one to
// a request that could not be made: no part of it is sent. NULL unless the reply reports success.
json exchange(int connection, json request) noexcept {
  json reply;
  if (connection != no_connection && request) {
    if (!cfg_send(connection, request.get())) shutdown(connection, SHUT_WR);
    request.reset();
    reply = receive(connection);
  }
  if (connection != no_connection) close(connection);
  return succeeded(reply.get()) ? std::move(reply) : nullptr;
}

json new_request(const char *method) noexcept {
  return json(json_pack("{s:s, s:{}}", "method", method, "data"));
}

json_t *data_of(const json &message) noexcept { return json_object_get(message.get(), "data"); }

// Adds a member; a NULL text adds none.
bool add(json_t *object, const char *key, const char *text) noexcept {
  return !text || json_object_set_new(object, key, json_string(text)) == 0;
}
bool add(json_t *object, const char *key, int32_t number) noexcept {
  return json_object_set_new(object, key, json_integer(number)) == 0;
}

// The verb goes with the security context, never without it. A request whose context cannot be written must
// not be sent: without one it would ask for more than the caller may see.
bool add_context(const json &request, const char *secctxt, int32_t verb) noexcept {
  return !secctxt || (add(request.get(), "secctxt", secctxt) && add(request.get(), "verb", verb));
}

json fields_request(const char *object) noexcept {
  json request = new_request("get_fields");
  return add(data_of(request), "object", object) ? std::move(request) : nullptr;
}

json search_request(const char *object, const cfg_condition *conditions, int32_t verb,
                    const char *secctxt) noexcept {
  json request = new_request("search");
  json_t *data = data_of(request);
  if (!add_context(request, secctxt, verb)) return nullptr;
  if (conditions && json_object_set_new(data, "conditions", condition_to_json(conditions)) != 0)
    return nullptr;
  return add(data, "object", object) ? std::move(request) : nullptr;
}

json get_request(const char *id, int32_t offset, int32_t limit, int32_t verb, const char *secctxt) noexcept {
  json request = new_request("get");
  json_t *data = data_of(request);
  const bool complete = add_context(request, secctxt, verb) && add(data, "id", id) &&
                        add(data, "offset", offset) && add(data, "limit", limit);
  return complete ? std::move(request) : nullptr;
}

// ---- Arrays of strings, as callers get them ----

struct strings_release {
  void operator()(char **strings) const noexcept {
    for (char **string = strings; *string; ++string) std::free(*string);
    std::free(strings);
  }
};
using strings = std::unique_ptr<char *[], strings_release>;

// A copy of a JSON array of strings, with NULL behind the last, so that whoever was told a wrong count can
// see the end. NULL when there is no memory, or when an element is no string.
strings copy_of(const json_t *array) noexcept {
  const size_t size = json_array_size(array);
  strings copy(static_cast<char **>(std::calloc(size + 1, sizeof(char *))));
  for (size_t i = 0; copy && i < size; ++i) {
    const char *text = json_string_value(json_array_get(array, i));
    copy[i] = text ? strdup(text) : nullptr;
    if (!copy[i]) return nullptr;
  }
  return copy;
}

}  // namespace

int twsearch_connect(void) noexcept {
  const int connection = connect_and_greet();
  return connection == no_connection ? 0 : connection;
}

// Here and in twsearch_fetch() a descriptor 0 counts as no connection, as for every caller of
// twsearch_connect(). It stays open, so that the next attempt gets another number.
int32_t twsearch_get_fields(const char *object, char ***fields, int32_t *count) noexcept {
  if (!fields || !count) return 0;
  const int connection = twsearch_connect();
  if (connection == 0) return 0;
  const json reply = exchange(connection, fields_request(object));
  if (!reply) return 0;
  const json_t *found = json_object_get(data_of(reply), "fields");
  strings copies = copy_of(found);
  if (!copies) return 0;
  *count = static_cast<int32_t>(json_array_size(found));
  *fields = copies.release();
  return 1;
}

// Unlike the other two this does not test the descriptor, by design: a connection that has number 0, as in a
// process without standard input, serves a search like any other. When there is no connection the search goes
// nowhere and ends for want of a reply; what this process has at descriptor 0, maybe a socket of its own, is
// neither written to nor closed.
char *twsearch_create(const char *object, cfg_condition *conditions, int32_t verb,
                      const char *secctxt) noexcept {
  const int connection = connect_and_greet();
  const json reply = exchange(connection, search_request(object, conditions, verb, secctxt));
  const char *id = json_string_value(json_object_get(data_of(reply), "id"));
  return id ? strdup(id) : nullptr;
}

int32_t twsearch_fetch(const char *id, int32_t offset, int32_t limit, char ***items, int32_t *count,
                       int32_t verb, const char *secctxt) noexcept {
  constexpr int32_t not_connected = -1, not_successful = -2;
  if (!items || !count) return not_successful;
  const int connection = twsearch_connect();
  if (connection == 0) return not_connected;
  const json reply = exchange(connection, get_request(id, offset, limit, verb, secctxt));
  if (!reply) return not_successful;
  const json_t *found = json_object_get(data_of(reply), "items");
  const size_t size = json_array_size(found);
  strings copies;
  if (size > 0 && !(copies = copy_of(found))) return not_successful;
  *count = static_cast<int32_t>(json_integer_value(json_object_get(data_of(reply), "count")));
  *items = copies.release();
  return static_cast<int32_t>(size);
}
