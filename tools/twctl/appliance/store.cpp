// twctl store: the configuration store as a whole.
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <exception>
#include <memory>

#include "cli/failure.hpp"
#include "cli/files.hpp"
#include "cli/secret.hpp"
#include "cli/session.hpp"
#include "cli/text.hpp"
#include "commands.hpp"

namespace twctl {

namespace {

constexpr size_t import_limit = size_t{1} << 30;

struct export_target {
  std::unique_ptr<private_file> file;  ///< NULL: standard output
  std::exception_ptr problem;
};

int take_export(void *context, const char *data, size_t length) {
  auto *target = static_cast<export_target *>(context);
  try {
    if (target->file)
      target->file->write({data, length});
    else if (fwrite(data, 1, length, stdout) != length)
      throw system_failure("cannot write to standard output");
    return 1;
  } catch (...) {
    target->problem = std::current_exception();
    return 0;
  }
}

void report_export(const session &work, const std::string &path) {
  const options &opts = work.opts();
  auto revision = static_cast<int64_t>(cfg_revision(work.store()));
  if (opts.dry_run)
    work.note(fmt::format("Dry run: revision {} would be exported to '{}'.", revision, printable(path)));
  if (opts.json()) {
    sheet result;
    result.add("file", "File", path);
    result.add("revision", "Revision", revision);
    result.add("dry_run", "Dry run", opts.dry_run);
    result.print(opts);
  } else if (!opts.dry_run) {
    fmt::print("Exported revision {} to '{}'. The file holds every secret of the store: keep it safe.\n",
               revision, printable(path));
  }
}

void export_store(const options &opts, const std::string &path) {
  session work(opts, session::access::read);
  export_target target;
  if (opts.dry_run) return report_export(work, path);
  if (path != "-") target.file = std::make_unique<private_file>(path);
  int done = cfg_export(work.store(), take_export, &target);
  if (target.problem) std::rethrow_exception(target.problem);
  if (!done) throw store_failure(work.store(), "cannot export the store");
  if (!target.file) return;
  target.file->publish();
  report_export(work, path);
}

struct import_source {
  std::string_view rest;
};

size_t give_import(void *context, char *buffer, size_t size) {
  auto *source = static_cast<import_source *>(context);
  size_t length = std::min(size, source->rest.size());
  std::memcpy(buffer, source->rest.data(), length);
  source->rest.remove_prefix(length);
  return length;
}

void import_store(const options &opts, const std::string &path) {
  secret text = read_file(path, import_limit);
  session work(opts, session::access::create);
  import_source source{text.view()};
  if (!cfg_import(work.store(), give_import, &source))
    throw store_failure(work.store(), fmt::format("cannot import '{}'", printable(path)));
  work.note("An import replaces everything. The changes name all that the store holds afterwards.");
  if (!opts.yes && !opts.dry_run &&
      !confirm(fmt::format("Replace everything in the store '{}'?", printable(opts.store))))
    throw failure(exit_code::failure, "nothing was imported", "it was not confirmed");
  outcome result = work.commit("import the whole store");
  work.report(result, fmt::format("The store '{}' now holds what '{}' holds.", printable(opts.store),
                                  printable(path)));
}

struct problem_list {
  listing rows{"problems", {{"where", "WHERE"}, {"problem", "PROBLEM"}}};
  std::exception_ptr problem;
};

int take_problem(void *context, const char *where, const char *problem) {
  auto *target = static_cast<problem_list *>(context);
  try {
    target->rows.add({cell_of(where), cell_of(problem)});
    return 1;
  } catch (...) {
    target->problem = std::current_exception();
    return 0;
  }
}

void verify(const options &opts) {
  session work(opts, session::access::read);
  problem_list found;
  int sound = cfg_verify(work.store(), take_problem, &found);
  if (found.problem) std::rethrow_exception(found.problem);
  if (opts.json() || found.rows.size()) found.rows.print(opts);
  if (found.rows.size())
    throw failure(exit_code::failure, fmt::format("the store '{}' is damaged", printable(opts.store)),
                  fmt::format("{} problem{} found", found.rows.size(), found.rows.size() == 1 ? "" : "s"),
                  "restore the last export into a new store: twctl store import FILE --store NEW");
  if (!sound) throw store_failure(work.store(), "the store could not be checked");
  if (!opts.json()) fmt::print("Revision {} is sound.\n", cfg_revision(work.store()));
}

void compact(const options &opts, const std::string &path) {
  session work(opts, session::access::read);
  auto revision = static_cast<int64_t>(cfg_revision(work.store()));
  if (opts.dry_run) {
    work.note(fmt::format("Dry run: revision {} would be copied to '{}'.", revision, printable(path)));
  } else if (!cfg_compact(work.store(), path.c_str())) {
    throw store_failure(work.store(), fmt::format("cannot write a compact copy to '{}'", printable(path)));
  }
  if (opts.json()) {
    sheet result;
    result.add("directory", "Directory", path);
    result.add("revision", "Revision", revision);
    result.add("dry_run", "Dry run", opts.dry_run);
    result.print(opts);
  } else if (!opts.dry_run) {
    fmt::print("Copied revision {} to '{}'. To use it, stop the store's users and swap the directories.\n",
               revision, printable(path));
  }
}

void status(const options &opts) {
  session work(opts, session::access::read);
  auto info = std::make_unique<cfg_status_info>();
  if (!cfg_status(work.store(), info.get()))
    throw store_failure(work.store(), "cannot read the store's status");
  sheet result;
  auto number = [](uint64_t value) { return cell(static_cast<int64_t>(value)); };
  result.add("store", "Store", opts.store);
  result.add("engine", "Engine", cell_of(info->engine));
  result.add("revision", "Revision", number(info->revision));
  result.add("nodes", "Nodes", int64_t{cfg_get_nodes_count(work.store())});
  result.add("records", "Records", number(info->records));
  result.add("used_bytes", "Bytes in use", number(info->used_bytes));
  result.add("file_bytes", "File size", number(info->file_bytes));
  result.add("map_bytes", "Reserved", number(info->map_bytes));
  result.add("oldest_log", "Log from", number(info->oldest_log));
  result.add("reader_count", "Readers", number(info->reader_count));
  result.print(opts);
}

struct commit_list {
  listing rows{"commits", {{"revision", "REVISION", true}, {"time", "TIME"}, {"who", "WHO"}, {"why", "WHY"}}};
  size_t limit = 0;
  std::exception_ptr problem;
};

int take_commit(void *context, const cfg_commit_info *commit) {
  auto *target = static_cast<commit_list *>(context);
  try {
    target->rows.add({static_cast<int64_t>(commit->revision), utc_time(commit->time_ms / 1000),
                      cell_of(commit->who), cell_of(commit->why)});
    return target->limit == 0 || target->rows.size() < target->limit;
  } catch (...) {
    target->problem = std::current_exception();
    return 0;
  }
}

void list_commits(const options &opts, size_t limit) {
  session work(opts, session::access::read);
  commit_list commits;
  commits.limit = limit;
  int done = cfg_visit_log(work.store(), 0, take_commit, &commits);
  if (commits.problem) std::rethrow_exception(commits.problem);
  if (!done) throw store_failure(work.store(), "cannot read the commit log");
  commits.rows.print(opts);
}

void show_commit(const options &opts, uint64_t revision) {
  session work(opts, session::access::read);
  std::vector<change> changes = changes_of_commit(work.store(), revision);
  if (!opts.json()) {
    print_changes(changes, stdout);
    return;
  }
  json_value result = new_object();
  put(result.get(), "revision", static_cast<int64_t>(revision));
  put(result.get(), "changes", changes_to_json(changes));
  print_json(result);
}

}  // namespace

void add_store(CLI::App &program, const options &opts) {
  CLI::App *noun = program.add_subcommand("store", "The configuration store as a whole");
  noun->require_subcommand(1);
  auto path = std::make_shared<std::string>();

  CLI::App *verb = add_verb(noun, "export", "Write the whole store, secrets included, as JSON",
                            "  twctl store export backup.json\n"
                            "  twctl store export - | gpg -e -r ops > backup.json.gpg");
  verb->add_option("file", *path, "New file (made with mode 0600), or - for standard output")->required();
  verb->callback([&opts, path] { export_store(opts, *path); });

  verb = add_verb(noun, "import", "Replace the whole store with an export",
                  "  twctl store import backup.json --dry-run\n"
                  "  twctl store import backup.json --store ./restored --yes");
  verb->add_option("file", *path, "File made by 'twctl store export', or - for standard input")->required();
  verb->callback([&opts, path] { import_store(opts, *path); });

  verb = add_verb(noun, "verify", "Check every record of the store", "  twctl store verify");
  verb->callback([&opts] { verify(opts); });

  verb = add_verb(noun, "compact", "Write a compact copy, without what was deleted",
                  "  twctl store compact /var/lib/twobject/store.new");
  verb->add_option("directory", *path, "New directory")->required();
  verb->callback([&opts, path] { compact(opts, *path); });

  verb = add_verb(noun, "status", "Show sizes, revision and readers", "  twctl store status -o json");
  verb->callback([&opts] { status(opts); });

  auto limit = std::make_shared<size_t>(0);
  auto revision = std::make_shared<uint64_t>(0);
  verb = add_verb(noun, "log", "List commits, newest first, or show what one of them changed",
                  "  twctl store log --limit 10\n"
                  "  twctl store log 42");
  add_limit(verb, *limit);
  CLI::Option *one = verb->add_option("revision", *revision, "Show the changes of this commit");
  verb->callback([&opts, limit, revision, one] {
    if (one->count())
      show_commit(opts, *revision);
    else
      list_commits(opts, *limit);
  });
}

}  // namespace twctl
