#include "nodes/products.hpp"

#include <algorithm>

#include "cli/text.hpp"

namespace twctl {

namespace {

constexpr product products[] = {
    {"tarnwell", reach::vpn},          {"acs6000", reach::credentials},     {"acs8000", reach::credentials},
    {"cisco2900", reach::credentials}, {"acs_classic", reach::credentials}, {"generic", reach::generic},
};

/// Other spellings, folded to letters and digits. Every product's own name is understood without an entry.
struct alias {
  const char *text;
  const char *kind;
};
constexpr alias aliases[] = {
    {"tarnwellos", "tarnwell"},
    {"acs6004", "acs6000"},
    {"acs6008", "acs6000"},
    {"acs6016", "acs6000"},
    {"acs6032", "acs6000"},
    {"acs6048", "acs6000"},
    {"acs8008", "acs8000"},
    {"acs8016", "acs8000"},
    {"acs8032", "acs8000"},
    {"acs8048", "acs8000"},
    {"cisco2901", "cisco2900"},
    {"cisco2911", "cisco2900"},
    {"cisco2921", "cisco2900"},
    {"cisco2951", "cisco2900"},
    {"acs1", "acs_classic"},
    {"acs4", "acs_classic"},
    {"acs8", "acs_classic"},
    {"acs16", "acs_classic"},
    {"acs32", "acs_classic"},
    {"acs48", "acs_classic"},
    {"genericserialconsole", "generic"},
    {"genericconsoleserver", "generic"},
};

}  // namespace

const product *find_product(std::string_view kind) {
  auto found = std::find_if(std::begin(products), std::end(products),
                            [&](const product &one) { return kind == one.kind; });
  return found == std::end(products) ? nullptr : found;
}

const product *recognise_product(std::string_view text) {
  std::string name = folded(text);
  if (name.empty()) return nullptr;
  for (const product &one : products)
    if (name == folded(one.kind)) return &one;
  for (const alias &other : aliases)
    if (name == other.text) return find_product(other.kind);
  return nullptr;
}

std::string product_names() {
  std::string names;
  for (const product &one : products) names += (names.empty() ? "" : ", ") + std::string(one.kind);
  return names;
}

}  // namespace twctl
