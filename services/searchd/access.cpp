#include "access.hpp"

#include <algorithm>
#include <array>

#include "refusal.hpp"

namespace searchd {

namespace {

constexpr std::size_t longest_context = 255;
constexpr std::int64_t view = 0;  // the verb of those who only look, the one thing that a search can do

// What somebody else than the appliance's own services may search.
constexpr std::array open_objects = {std::string_view("nodes")};

// A search is an oracle: who may ask whether a key equals a guess finds out what it holds.
constexpr std::array secret_keys = {std::string_view("password"),      std::string_view("package_password"),
                                    std::string_view("bindPassword"),  std::string_view("psk"),
                                    std::string_view("private_key"),   std::string_view("key"),
                                    std::string_view("token"),         std::string_view("secret"),
                                    std::string_view("request_token"), std::string_view("passwordHash")};

}  // namespace

void check_asker(const asker &who) {
  if (!who.context) return;
  if (who.context->empty()) throw refusal("the security context is empty");
  if (who.context->size() > longest_context) throw refusal("the security context is too long");
  if (who.verb != view) throw refusal("a security context can only view: verb 0");
}

void check_object(const asker &who, const std::string &object) {
  if (!who.context || std::find(open_objects.begin(), open_objects.end(), object) != open_objects.end())
    return;
  throw refusal("the security context may not search this object type");
}

bool is_secret(std::string_view key) {
  const std::string_view last = key.substr(key.rfind('.') + 1);  // all of it without a dot
  return std::find(secret_keys.begin(), secret_keys.end(), last) != secret_keys.end();
}

void check_key(std::string_view key) {
  if (is_secret(key)) throw refusal("this key cannot be searched");
}

}  // namespace searchd
