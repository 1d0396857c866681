#include "service.hpp"

#include <twconfig/transport.h>

#include <algorithm>
#include <new>
#include <twobject/owner.hpp>

#include "access.hpp"
#include "log.hpp"
#include "query.hpp"
#include "refusal.hpp"

namespace searchd {

namespace {

json made(json_t *value) {
  if (!value) throw std::bad_alloc();
  return json(value);
}

json success(json data) { return made(json_pack("{s:b, s:o}", "result", 1, "data", data.release())); }

constexpr char out_of_memory[] = R"({"result":false,"error":"out of memory"})";

std::string text_of(const json_t *reply) {
  const twobject::heap_text text(json_dumps(reply, JSON_COMPACT));
  if (!text) throw std::bad_alloc();
  return text.get();
}

std::string failure(const char *why) noexcept {
  try {
    return text_of(made(json_pack("{s:b, s:s}", "result", 0, "error", why)).get());
  } catch (const std::exception &) {
    return out_of_memory;
  }
}

std::string text_member(const json_t *data, const char *name) {
  const char *text = json_string_value(json_object_get(data, name));
  if (!text) throw refusal(std::string("\"") + name + "\" is missing or no string");
  return text;
}

// Offsets and limits: numbers from 0 up.
std::size_t size_member(const json_t *data, const char *name) {
  const json_t *number = json_object_get(data, name);
  if (!json_is_integer(number) || json_integer_value(number) < 0)
    throw refusal(std::string("\"") + name + "\" is missing or no number from 0 up");
  return static_cast<std::size_t>(json_integer_value(number));
}

asker asker_of(const json_t *request) {
  asker who;
  const json_t *context = json_object_get(request, "secctxt"), *verb = json_object_get(request, "verb");
  if (!context && !verb) return who;
  if (!json_is_string(context) || !json_is_integer(verb))
    throw refusal("\"secctxt\", a string, and \"verb\", an integer, come together");
  who.context = json_string_value(context);
  who.verb = json_integer_value(verb);
  return who;
}

json strings(const std::vector<std::string> &texts) {
  json array = made(json_array());
  for (const std::string &text : texts)
    if (json_array_append_new(array.get(), json_string(text.c_str())) != 0) throw std::bad_alloc();
  return array;
}

}  // namespace

std::string service::answer(const std::string &message, bool &greeted) {
  try {
    const json request(json_loadb(message.data(), message.size(), JSON_REJECT_DUPLICATES, nullptr));
    std::string reply = text_of(serve(request.get(), greeted).get());
    if (reply.size() > CFG_TRANSPORT_MAX) throw refusal("the reply is too large: fetch a part of it");
    return reply;
  } catch (const refusal &why) {
    log(level::debug, why.what());
    return failure(why.what());
  } catch (const std::bad_alloc &) {
    log(level::error, "out of memory");
    return failure("out of memory");
  } catch (const std::exception &problem) {
    log(level::error, problem.what());
    return failure(problem.what());
  }
}

json service::serve(const json_t *request, bool &greeted) {
  const char *method = json_string_value(json_object_get(request, "method"));
  const json_t *data = json_object_get(request, "data");
  if (!method || !json_is_object(data)) throw refusal("a request is an object with \"method\" and \"data\"");
  const std::string name = method;
  if (name == "hello") {
    log(level::debug, "hello from " + text_member(data, "client_name"));
    greeted = true;
    return success(made(json_object()));
  }
  if (!greeted) throw refusal("say hello first");
  const asker who = asker_of(request);
  check_asker(who);
  if (name == "get_fields") return get_fields(data, who);
  if (name == "search") return search(data, who);
  if (name == "get") return get(data, who);
  throw refusal("there is no such method");
}

json service::get_fields(const json_t *data, const asker &who) {
  const std::string object = text_member(data, "object");
  check_object(who, object);
  return success(made(json_pack("{s:o}", "fields", strings(evaluator_.fields(object)).release())));
}

json service::search(const json_t *data, const asker &who) {
  const std::string object = text_member(data, "object");
  check_object(who, object);
  const query wanted = read_query(json_object_get(data, "conditions"));
  result_set found{object, evaluator_.search(object, wanted), who};
  const std::string id = results_.keep(std::move(found), clock::now());
  return success(made(json_pack("{s:s}", "id", id.c_str())));
}

json service::get(const json_t *data, const asker &who) {
  const std::string id = text_member(data, "id");
  const std::size_t offset = size_member(data, "offset"), limit = size_member(data, "limit");
  const result_set *result = results_.find(id, clock::now());
  // Somebody else's result is as good as none.
  if (!result || result->owner != who) throw refusal("there is no such result, or no longer");
  const std::size_t total = result->entries.size();
  const std::size_t first = std::min(offset, total);
  const std::size_t last = limit == 0 ? total : first + std::min(limit, total - first);  // 0: all that follow
  std::vector<std::string> items;
  items.reserve(last - first);
  for (std::size_t i = first; i < last; ++i)
    items.push_back(result->collection + '-' + std::to_string(result->entries[i]));
  return success(made(
      json_pack("{s:I, s:o}", "count", static_cast<json_int_t>(total), "items", strings(items).release())));
}

}  // namespace searchd
