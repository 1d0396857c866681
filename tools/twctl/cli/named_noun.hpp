// Nouns whose records are a name and nothing else: what they have in common, which is everything.
#pragma once

#include <fmt/format.h>

#include <memory>
#include <string>
#include <vector>

#include "cli/entries.hpp"
#include "cli/failure.hpp"
#include "cli/text.hpp"
#include "commands.hpp"

namespace twctl {

template <typename Record>
class named_noun {
 public:
  struct functions {
    Record *(*by_id)(cfg *, const char *);
    Record *(*make)(cfg *, const char *);
    const char *(*id)(Record *);
    const char *(*name)(const Record *);
    int (*set_name)(Record *, const char *);
    int (*save)(Record *);
    void (*remove)(Record *);
    void (*release)(Record *);
    /// The names of those who refer to a record, which must not be deleted under them; NULL when nobody does.
    std::vector<std::string> (*users_of)(cfg *, const Record *);
  };
  using owner = std::unique_ptr<Record, void (*)(Record *)>;

  /// `list` is the name of the list in the store, `what` what a record is called, `one` the same with its
  /// article.
  named_noun(const char *noun, const char *list, const char *what, const char *one, const functions &record)
      : noun_(noun), list_(list), what_(what), one_(one), record_(record) {}

  /// Adds the noun with its verbs. The noun must outlive the program's options.
  void add_to(CLI::App &program, const options &opts, const std::string &description,
              const std::string &example, const std::string &new_name) const {
    CLI::App *noun = program.add_subcommand(noun_, description);
    noun->require_subcommand(1);
    std::string command = fmt::format("  twctl {}", noun_), which = fmt::format("ID or name of {}", one_);
    auto reference = std::make_shared<std::string>();
    auto name = std::make_shared<std::string>();

    CLI::App *verb = add_verb(noun, "list", fmt::format("List {}s", what_),
                              command + " list\n" + command + " list -o json");
    verb->callback([this, &opts] { list(opts); });

    verb = add_verb(noun, "add", fmt::format("Add {}", one_), fmt::format("{} add {}", command, example));
    verb->add_option("name", *name, "Its name")->required();
    verb->callback([this, &opts, name] { add(opts, *name); });

    verb =
        add_verb(noun, "rename", fmt::format("Change the name of {}", one_),
                 fmt::format("{0} rename {1} {2}\n{0} rename {1} {2} --dry-run", command, example, new_name));
    verb->add_option(noun_, *reference, which)->required();
    verb->add_option("name", *name, "Its new name")->required();
    verb->callback([this, &opts, reference, name] { rename(opts, *reference, *name); });

    verb = add_verb(noun, "delete", fmt::format("Delete {}", one_),
                    fmt::format("{} delete {} --yes", command, example));
    verb->add_option(noun_, *reference, which)->required();
    verb->callback([this, &opts, reference] { remove(opts, *reference); });
  }

 private:
  owner load(cfg *store, const std::string &id) const {
    return owner(record_.by_id(store, id.c_str()), record_.release);
  }

  owner named(cfg *store, const std::string &name) const {
    for (const std::string &id : ids_in(store, list_))
      if (owner one = load(store, id); one && name == view(record_.name(one.get()))) return one;
    return owner(nullptr, record_.release);
  }

  owner find(cfg *store, const std::string &reference) const {
    owner one(nullptr, record_.release);
    if (reference.starts_with(std::string(list_) + "-")) one = load(store, reference);
    if (!one) one = named(store, reference);
    return require_found(std::move(one), what_, reference, noun_);
  }

  void require_new(cfg *store, const std::string &name) const {
    require_label(name, fmt::format("the name of {}", one_));
    if (owner same = named(store, name)) require_free(record_.id(same.get()), name);
  }

  void list(const options &opts) const {
    session work(opts, session::access::read);
    listing result(list_, {{"id", "ID"}, {"name", "NAME"}});
    for (const std::string &id : ids_in(work.store(), list_)) {
      owner one = load(work.store(), id);
      if (!one) throw store_failure(work.store(), fmt::format("cannot read {}", id));
      result.add({id, cell_of(record_.name(one.get()))});
    }
    result.print(opts);
  }

  /// Gives the record its name, and saves and reports it.
  void save(session &work, Record *one, const std::string &name, const char *done) const {
    if (!record_.set_name(one, name.c_str()) || !record_.save(one))
      throw store_failure(work.store(),
                          fmt::format("cannot save the {} (is there a list '{}'?)", what_, list_));
    finish_entry(work, record_.id(one), name, done);
  }

  void add(const options &opts, const std::string &name) const {
    session work(opts, session::access::write);
    require_new(work.store(), name);
    save(work, owner(record_.make(work.store(), name.c_str()), record_.release).get(), name, "Added");
  }

  void rename(const options &opts, const std::string &reference, const std::string &name) const {
    session work(opts, session::access::write);
    owner one = find(work.store(), reference);
    if (name != view(record_.name(one.get()))) require_new(work.store(), name);
    save(work, one.get(), name, "Renamed to");
  }

  void remove(const options &opts, const std::string &reference) const {
    session work(opts, session::access::write);
    owner one = find(work.store(), reference);
    std::string id = record_.id(one.get()), name = record_.name(one.get());
    if (record_.users_of) {
      std::string users;
      for (const std::string &user : record_.users_of(work.store(), one.get()))
        users += (users.empty() ? "" : ", ") + user;
      if (!users.empty())
        throw failure(exit_code::conflict, fmt::format("the {} '{}' is in use", what_, printable(name)),
                      "by " + users);
    }
    confirm_delete(opts, fmt::format("the {} '{}'", what_, name));
    record_.remove(one.get());
    if (cfg_get_by_id(work.store(), id.c_str()))
      throw store_failure(work.store(), fmt::format("cannot delete the {}", what_));
    finish_entry(work, id, name, "Deleted");
  }

  const char *noun_;
  const char *list_;
  const char *what_, *one_;
  functions record_;
};

}  // namespace twctl
