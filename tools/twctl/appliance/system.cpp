// twctl system: the appliance's scalar settings.
#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <optional>
#include <variant>

#include "cli/failure.hpp"
#include "cli/session.hpp"
#include "cli/text.hpp"
#include "commands.hpp"

namespace twctl {

namespace {

struct number_setting {
  int (*get)(cfg *, int32_t *);
  int (*set)(cfg *, int32_t);
  int32_t lowest, highest;
};

struct text_setting {
  int (*get)(cfg *, char **);
  int (*set)(cfg *, const char *);
  bool (*accepts)(std::string_view);
  const char *form;
};

/// A setting: the name that is typed, the unit that is told, and how the library reads and writes it.
struct setting {
  const char *name;
  const char *unit;
  const char *meaning;
  std::variant<number_setting, text_setting> access;
};

bool is_host_name(std::string_view text) { return is_host(text) && text.find(':') == std::string_view::npos; }

/// "Europe/Berlin", "UTC", "Etc/GMT+5": the forms of the time-zone database.
bool is_timezone(std::string_view text) {
  auto fits = [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
           c == '-' || c == '+' || c == '/';
  };
  return !text.empty() && text.size() <= 64 && text.front() != '/' && text.back() != '/' &&
         std::all_of(text.begin(), text.end(), fits);
}

constexpr int32_t a_week = 7 * 24 * 60;

const setting settings[] = {
    {"hostname", "", "host name of the appliance",
     text_setting{cfg_system_get_hostname, cfg_system_set_hostname, is_host_name,
                  "letters, digits, hyphens and dots, at most 63 characters between dots"}},
    {"timezone", "", "time zone, as in the time-zone database",
     text_setting{cfg_system_get_timezone, cfg_system_set_timezone, is_timezone,
                  "a name such as Europe/Berlin or UTC"}},
    {"webui_session_timeout", "minutes", "idle time-out of the web interface; 0 is none",
     number_setting{cfg_system_get_webui_session_timeout, cfg_system_set_webui_session_timeout, 0, a_week}},
    {"cli_session_timeout", "minutes", "idle time-out of the command line; 0 is none",
     number_setting{cfg_system_get_cli_session_timeout, cfg_system_set_cli_session_timeout, 0, a_week}},
    {"ping_interval", "seconds", "interval between pings of third-party nodes",
     number_setting{cfg_system_get_ping_interval, cfg_system_set_ping_interval, 1, 86400}},
    {"sync_interval", "seconds", "interval between port synchronisations of third-party nodes",
     number_setting{cfg_system_get_sync_interval, cfg_system_set_sync_interval, 1, 86400}},
    {"ssh_port", "", "TCP port of the SSH server",
     number_setting{cfg_net_get_ssh_port, cfg_net_set_ssh_port, 1, 65535}},
    {"fhvpn_mtu", "bytes", "MTU of the appliance's own VPN server",
     number_setting{cfg_system_get_fhvpn_mtu, cfg_system_set_fhvpn_mtu, 576, 9000}},
};

const setting &find(const std::string &name) {
  for (const setting &one : settings)
    if (name == one.name) return one;
  std::string names;
  for (const setting &one : settings) names += fmt::format("{}{}", names.empty() ? "" : ", ", one.name);
  throw failure(exit_code::not_found, fmt::format("there is no setting '{}'", printable(name)), "",
                "the settings are " + names);
}

cell value_of(cfg *store, const setting &one) {
  if (const auto *number = std::get_if<number_setting>(&one.access)) {
    std::optional<int32_t> value = number_from(number->get, store);
    return value ? cell(int64_t{*value}) : cell();
  }
  return cell_of(text_from(std::get<text_setting>(one.access).get, store).get());
}

std::string with_unit(const setting &one) { return *one.unit ? fmt::format(" {}", one.unit) : std::string(); }

void get(const options &opts, const std::string &name) {
  const setting *only = name.empty() ? nullptr : &find(name);
  session work(opts, session::access::read);
  if (only && !opts.json()) {
    cell value = value_of(work.store(), *only);
    if (std::holds_alternative<std::monostate>(value))
      throw failure(exit_code::not_found, fmt::format("'{}' is not set", only->name), "",
                    fmt::format("set it with 'twctl system set {} VALUE'", only->name));
    fmt::print("{}\n", words(value));
    return;
  }
  listing list("settings",
               {{"name", "SETTING"}, {"value", "VALUE"}, {"unit", "UNIT"}, {"meaning", "MEANING"}});
  for (const setting &one : settings)
    if (!only || only == &one)
      list.add(
          {cell_of(one.name), value_of(work.store(), one), unless_empty(one.unit), cell_of(one.meaning)});
  list.print(opts);
}

/// Writes the value after checking what the library leaves to its callers: units and ranges.
int write(cfg *store, const setting &one, const std::string &text) {
  if (const auto *number = std::get_if<number_setting>(&one.access)) {
    std::optional<int64_t> value = parse_number(text);
    if (!value || *value < number->lowest || *value > number->highest)
      throw failure(exit_code::invalid_input,
                    fmt::format("'{}' is no value for {}", printable(text), one.name),
                    fmt::format("it must be a whole number from {} to {}{}", number->lowest, number->highest,
                                with_unit(one)));
    return number->set(store, static_cast<int32_t>(*value));
  }
  const auto &string = std::get<text_setting>(one.access);
  if (!string.accepts(text))
    throw failure(exit_code::invalid_input, fmt::format("'{}' is no value for {}", printable(text), one.name),
                  fmt::format("it must be {}", string.form));
  return string.set(store, text.c_str());
}

void set(const options &opts, const std::string &name, const std::string &text) {
  const setting &one = find(name);
  session work(opts, session::access::write);
  if (!write(work.store(), one, text)) {
    failure problem = store_failure(work.store(), fmt::format("cannot set {}", one.name));
    throw failure(problem.code(), problem.what(), problem.why(),
                  "the store lacks the map that holds this setting; was it made with 'twctl init'?");
  }
  outcome result = work.commit(fmt::format("set {}", one.name));
  sheet details;
  details.add("name", "Setting", cell_of(one.name));
  bool is_number = std::holds_alternative<number_setting>(one.access);
  details.add("value", "Value", is_number ? cell(*parse_number(text)) : cell(text));
  work.report(result, fmt::format("{} is now {}{}.", one.name, printable(text), with_unit(one)),
              details.json());
}

}  // namespace

void add_system(CLI::App &program, const options &opts) {
  CLI::App *noun = program.add_subcommand("system", "Settings of the appliance itself");
  noun->require_subcommand(1);
  auto name = std::make_shared<std::string>();
  auto value = std::make_shared<std::string>();

  CLI::App *verb = add_verb(noun, "get", "Show one setting, or all of them",
                            "  twctl system get\n"
                            "  twctl system get ssh_port\n"
                            "  twctl system get -o json");
  verb->add_option("setting", *name, "Name of the setting");
  verb->callback([&opts, name] { get(opts, *name); });

  verb = add_verb(noun, "set", "Change a setting",
                  "  twctl system set hostname console-hub-1\n"
                  "  twctl system set webui_session_timeout 20     (minutes)\n"
                  "  twctl system set ssh_port 2222 --dry-run");
  verb->add_option("setting", *name, "Name of the setting")->required();
  verb->add_option("value", *value, "New value")->required();
  verb->callback([&opts, name, value] { set(opts, *name, *value); });
}

}  // namespace twctl
