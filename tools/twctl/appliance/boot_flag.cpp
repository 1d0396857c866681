// twctl bootflag: switches that the appliance looks at when it starts.
#include <fmt/format.h>

#include "cli/fields.hpp"
#include "cli/text.hpp"
#include "commands.hpp"

namespace twctl {

namespace {

constexpr field<cfg_boot_flag> fields[] = {
    shown_text<cfg_boot_flag_get_uuid>("id", "ID"),
    text_field<cfg_boot_flag_get_name, cfg_boot_flag_set_name, require_label>("name", "Name"),
    text_field<cfg_boot_flag_get_flag_type, cfg_boot_flag_set_flag_type, require_label>("flag_type", "Type"),
    truth_field<cfg_boot_flag_get_isset, cfg_boot_flag_set_isset>("is_set", "Set"),
};

boot_flag_record find_flag(cfg *store, const std::string &reference) {
  boot_flag_record one;
  if (reference.starts_with("boot_flags-")) one.reset(cfg_boot_flag_get_by_id(store, reference.c_str()));
  if (!one) one.reset(cfg_boot_flag_get_by_name(store, reference.c_str()));
  return require_found(std::move(one), "boot flag", reference, "bootflag");
}

void require_new(cfg *store, const std::string &name) {
  boot_flag_record same(cfg_boot_flag_get_by_name(store, name.c_str()));
  if (same) require_free(cfg_boot_flag_get_uuid(same.get()), name);
}

void list(const options &opts) {
  session work(opts, session::access::read);
  listing result("flags", {{"id", "ID"}, {"name", "NAME"}, {"flag_type", "TYPE"}, {"is_set", "SET"}});
  for (const std::string &id : ids_in(work.store(), "boot_flags")) {
    boot_flag_record one(cfg_boot_flag_get_by_id(work.store(), id.c_str()));
    if (!one) throw store_failure(work.store(), fmt::format("cannot read {}", id));
    list_fields(result, fields, one.get());
  }
  result.print(opts);
}

void show(const options &opts, const std::string &reference) {
  session work(opts, session::access::read);
  sheet result;
  show_fields(result, fields, find_flag(work.store(), reference).get());
  result.print(opts);
}

void save(session &work, cfg_boot_flag *one, const char *done) {
  if (!cfg_boot_flag_save(one))
    throw store_failure(work.store(), "cannot save the boot flag (is there a list 'boot_flags'?)");
  finish_entry(work, cfg_boot_flag_get_uuid(one), cfg_boot_flag_get_name(one), done);
}

void add(const options &opts, const std::string &name, const std::string &type,
         const std::vector<std::string> &assignments) {
  auto values = read_assignments(assignments, {"is_set"}, true);
  require_label(name, "the name of a boot flag");
  require_label(type, "the type of a boot flag");
  session work(opts, session::access::write);
  require_new(work.store(), name);
  boot_flag_record one(cfg_boot_flag_new(work.store(), name.c_str(), type.c_str()));
  set_fields(fields, one.get(), values);
  save(work, one.get(), "Added");
}

void set(const options &opts, const std::string &reference, const std::vector<std::string> &assignments) {
  auto values = read_assignments(assignments, settable(fields));
  session work(opts, session::access::write);
  boot_flag_record one = find_flag(work.store(), reference);
  if (auto name = values.find("name");
      name != values.end() && name->second != view(cfg_boot_flag_get_name(one.get())))
    require_new(work.store(), name->second);
  set_fields(fields, one.get(), values);
  save(work, one.get(), "Changed");
}

}  // namespace

void add_boot_flag(CLI::App &program, const options &opts) {
  CLI::App *noun =
      program.add_subcommand("bootflag", "Boot flags: switches that the appliance looks at when it starts");
  noun->require_subcommand(1);
  constexpr const char *what_a_flag_is = "ID or name of a boot flag";

  CLI::App *verb =
      add_verb(noun, "list", "List boot flags", "  twctl bootflag list\n  twctl bootflag list -o json");
  verb->callback([&opts] { list(opts); });

  auto reference = std::make_shared<std::string>();
  verb = add_verb(noun, "show", "Show one boot flag", "  twctl bootflag show factory_reset");
  verb->add_option("flag", *reference, what_a_flag_is)->required();
  verb->callback([&opts, reference] { show(opts, *reference); });

  auto type = std::make_shared<std::string>();
  auto assignments = std::make_shared<std::vector<std::string>>();
  verb = add_verb(noun, "add", "Add a boot flag, which is set unless is_set=no says otherwise",
                  "  twctl bootflag add factory_reset once\n"
                  "  twctl bootflag add verbose permanent is_set=no");
  verb->add_option("name", *reference, "Name of the new flag")->required();
  verb->add_option("type", *type, "Its type, which the appliance interprets")->required();
  verb->add_option("assignments", *assignments, "is_set=yes or is_set=no");
  verb->callback([&opts, reference, type, assignments] { add(opts, *reference, *type, *assignments); });

  verb = add_verb(noun, "set", "Change a boot flag",
                  "  twctl bootflag set factory_reset is_set=no\n\nFields: " + joined(settable(fields)));
  verb->add_option("flag", *reference, what_a_flag_is)->required();
  verb->add_option("assignments", *assignments, "FIELD=VALUE ...")->required();
  verb->callback([&opts, reference, assignments] { set(opts, *reference, *assignments); });
}

}  // namespace twctl
