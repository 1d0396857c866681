// Who may search for what. README.md states the rules.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace searchd {

// On whose behalf a client asks: its own without a security context.
struct asker {
  std::optional<std::string> context;
  std::int64_t verb = 0;

  bool operator==(const asker &) const = default;
};

// Throw a refusal.
void check_asker(const asker &who);
void check_object(const asker &who, const std::string &object);
void check_key(std::string_view key);

// Whether a key holds a secret: it can be neither searched nor learnt about.
bool is_secret(std::string_view key);

}  // namespace searchd
