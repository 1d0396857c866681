// twctl https csr: the request for the web server's next certificate.
#include <fmt/format.h>

#include <algorithm>

#include "cli/fields.hpp"
#include "cli/files.hpp"
#include "cli/secret_option.hpp"
#include "cli/text.hpp"
#include "commands.hpp"

namespace twctl {

namespace {

constexpr int32_t usual_key_length = 2048;
constexpr size_t longest_key_file = 64 * 1024;

bool is_ascii(const std::string &text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

/// What the subject of a request can hold.
template <size_t longest, size_t shortest = 1>
void require_part(const std::string &text, const std::string &name) {
  if (text.size() >= shortest && text.size() <= longest && is_ascii(text)) return;
  throw failure(exit_code::invalid_input, fmt::format("'{}' is no value for {}", printable(text), name),
                shortest == longest ? fmt::format("it must be {} ASCII characters", longest)
                                    : fmt::format("it must be 1 to {} ASCII characters", longest));
}

template <auto Get, auto Set, size_t longest, size_t shortest = 1>
constexpr field<cfg_csr> part(const char *name, const char *title) {
  return text_field<Get, Set, require_part<longest, shortest>>(name, title);
}

constexpr field<cfg_csr> subject[] = {
    part<cfg_csr_get_common_name, cfg_csr_set_common_name, 64>("common_name", "Common name"),
    part<cfg_csr_get_organization, cfg_csr_set_organization, 64>("organization", "Organization"),
    part<cfg_csr_get_org_unit, cfg_csr_set_org_unit, 64>("org_unit", "Unit"),
    part<cfg_csr_get_locality, cfg_csr_set_locality, 128>("locality", "Locality"),
    part<cfg_csr_get_state, cfg_csr_set_state, 128>("state", "State"),
    part<cfg_csr_get_country, cfg_csr_set_country, 2, 2>("country", "Country"),
    part<cfg_csr_get_email, cfg_csr_set_email, 128>("email", "E-mail"),
};
constexpr field<cfg_csr> others[] = {
    number_field<cfg_csr_get_key_length, cfg_csr_set_key_length, 1024, 8192>("key_length", "Key length"),
    shown_secret<cfg_csr_get_challenge_password>("challenge_password_set", "Challenge password set"),
};

bool in_progress(const cfg_csr *csr) { return cfg_csr_get_csr(csr) || cfg_csr_get_private_key(csr); }

csr_record load(cfg *store) {
  csr_record csr(cfg_get_https_csr(store));
  if (!csr) throw failure(exit_code::failure, "cannot read the request", "out of memory");
  return csr;
}

csr_record load_in_progress(cfg *store) {
  csr_record csr = load(store);
  if (!in_progress(csr.get()))
    throw failure(exit_code::not_found, "no request is in progress", "",
                  "make one with 'twctl https csr new'");
  return csr;
}

struct new_arguments {
  std::vector<std::string> assignments;
  secret_option password;
  std::string key_file;
  bool replace = false;
};

void require_complete(cfg_csr *csr) {
  std::vector<const char *> missing;
  for (const field<cfg_csr> &one : subject)
    if (one.read(csr) == cell()) missing.push_back(one.name);
  if (!missing.empty())
    throw failure(exit_code::invalid_input, fmt::format("the request lacks {}", joined(missing)),
                  "every part of the subject is required", "give FIELD=VALUE for each");
}

/// Gives the record its key, if it is not to be a new one.
void take_key(cfg_csr *csr, const std::string &file) {
  cfg_csr_delete_request(csr);
  if (file.empty()) {
    if (!cfg_csr_get_key_length(csr))
      require_set(cfg_csr_set_key_length(csr, usual_key_length), "key_length");
  } else {
    require_set(cfg_csr_set_private_key(csr, read_file(file, longest_key_file).c_str()), "the private key");
  }
}

void generate(cfg *store, cfg_csr *csr, const std::string &key_file) {
  if (cfg_csr_generate(csr)) return;
  if (cfg_message_get_code(cfg_get_message(store, 0)) == CFG_MESSAGE_BAD_KEY)
    throw failure(exit_code::invalid_input,
                  fmt::format("the private key in '{}' cannot be used", printable(key_file)),
                  "it is no PEM text, needs a pass phrase, or is too long");
  throw failure(exit_code::failure, "the request could not be generated", cfg_get_first_message_string(store),
                "does OpenSSL's configuration refuse the digest that requests are signed with?");
}

void make(const options &opts, const new_arguments &arguments) {
  std::vector<const char *> names = settable(subject, settable(others));
  auto values = read_assignments(arguments.assignments, names, true);
  session work(opts, session::access::write);
  csr_record csr = load(work.store());
  if (in_progress(csr.get()) && !arguments.replace)
    throw failure(exit_code::conflict, "a request is in progress already",
                  "a certificate that answers it is of no use without its private key",
                  "add --replace to drop both and begin again");
  set_fields(subject, csr.get(), values);
  set_fields(others, csr.get(), values);
  require_complete(csr.get());
  if (arguments.password.given())
    require_set(cfg_csr_set_challenge_password(csr.get(), arguments.password.read().c_str()),
                "challenge_password");
  take_key(csr.get(), arguments.key_file);
  generate(work.store(), csr.get(), arguments.key_file);
  if (!cfg_save_https_csr(csr.get())) throw store_failure(work.store(), "cannot save the request");
  std::string name = cfg_csr_get_common_name(csr.get());
  outcome result = work.commit(fmt::format("request an https certificate for {}", name));
  sheet told;
  told.add("common_name", "Common name", name);
  work.report(
      result,
      fmt::format("Made a request for {}; print it with 'twctl https csr show --pem'.", printable(name)),
      told.json());
}

struct show_arguments {
  std::string key_file;
  bool pem = false;
};

void show(const options &opts, const show_arguments &arguments) {
  session work(opts, session::access::read);
  bool whole = arguments.pem || !arguments.key_file.empty();
  csr_record csr = whole ? load_in_progress(work.store()) : load(work.store());
  if (!arguments.key_file.empty())
    hand_out_key(work, arguments.key_file, view(cfg_csr_get_private_key(csr.get())));
  if (arguments.pem && !opts.json()) {
    fmt::print("{}", view(cfg_csr_get_csr(csr.get())));
    return;
  }
  sheet result;
  result.add("in_progress", "In progress", in_progress(csr.get()));
  show_fields(result, subject, csr.get());
  show_fields(result, others, csr.get());
  if (arguments.pem) result.add("pem", "PEM", cell_of(cfg_csr_get_csr(csr.get())));
  result.print(opts);
}

void remove(const options &opts) {
  session work(opts, session::access::write);
  csr_record csr = load_in_progress(work.store());
  confirm_delete(opts, "the request in progress and its private key");
  cfg_csr_delete_request(csr.get());
  if (!cfg_save_https_csr(csr.get())) throw store_failure(work.store(), "cannot save the request");
  work.report(work.commit("delete the request for an https certificate"),
              "Deleted the request and its private key.");
}

}  // namespace

void add_https_csr(CLI::App *https, const options &opts) {
  CLI::App *noun = https->add_subcommand("csr", "The request for its next certificate");
  noun->require_subcommand(1);

  auto making = std::make_shared<new_arguments>();
  CLI::App *verb = add_verb(
      noun, "new", "Make a request; what is not given is taken from the last one",
      "  twctl https csr new common_name=hub.example organization='Example Ltd' org_unit=IT \\\n"
      "      locality=Berlin state=Berlin country=DE email=it@example.com\n"
      "  twctl https csr new common_name=hub-2.example key_length=4096 --challenge-password-file ./password\n"
      "  twctl https csr new --key hub.key --replace\n"
      "\nFields: " +
          joined(settable(subject, settable(others))));
  verb->add_option("assignments", making->assignments, "FIELD=VALUE ...");
  verb->add_option("--key", making->key_file,
                   "File of a private key, PEM without pass phrase; default: a new RSA key");
  verb->add_flag("--replace", making->replace, "Drop the request in progress with its private key");
  add_secret(verb, making->password, "challenge-password", "Challenge password");
  verb->callback([&opts, making] { make(opts, *making); });

  auto showing = std::make_shared<show_arguments>();
  verb = add_verb(noun, "show", "Show the request, or what the next one begins with",
                  "  twctl https csr show\n"
                  "  twctl https csr show --pem > hub.csr\n"
                  "  twctl https csr show --private-key hub.key");
  verb->add_flag("--pem", showing->pem,
                 "Print the request itself; a challenge password stands in it in clear");
  verb->add_option("--private-key", showing->key_file,
                   "Write the private key to this new file, with mode 0600");
  verb->callback([&opts, showing] { show(opts, *showing); });

  verb = add_verb(noun, "delete", "Delete the request in progress and its private key",
                  "  twctl https csr delete --yes");
  verb->callback([&opts] { remove(opts); });
}

}  // namespace twctl
