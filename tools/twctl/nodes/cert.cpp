// twctl cert: certificates that the appliance's authority issues to nodes.
#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <ctime>
#include <map>

#include "appliance/ca.hpp"
#include "cli/failure.hpp"
#include "cli/files.hpp"
#include "cli/session.hpp"
#include "cli/text.hpp"
#include "commands.hpp"
#include "nodes/nodes.hpp"
#include "nodes/products.hpp"

namespace twctl {

namespace {

constexpr size_t longest_common_name = 64;

struct issue_arguments {
  std::string node, common_name;
  unsigned attempts = 20;
  bool replace = false;
};

/// Seconds since the epoch of the revocation; 0 for a valid certificate. The record has no getter for it.
int32_t revoke_time_of(cfg *store, const char *id) {
  int32_t time = 0;
  cfg_map_get_int(store, cfg_get_by_id(store, id), "revoke_time", &time);
  return time;
}

/// The same for people, "" for a valid certificate.
std::string revocation_of(cfg *store, const char *id) {
  int32_t time = revoke_time_of(store, id);
  return time ? utc_time(time) : "";
}

/// The IDs of the certificates with this common name that are not revoked.
std::vector<std::string> valid_certificates(cfg *store, const std::string &common_name) {
  condition_tree tree(cfg_new_and_condition());
  cfg_condition_add_child(tree.get(),
                          cfg_new_string_condition("common_name", CFG_OP_EQUAL, common_name.c_str()));
  cfg_condition_add_child(tree.get(), cfg_new_untyped_condition("revoke_time", CFG_OP_ABSENT));
  std::vector<std::string> ids;
  cfg_elem *found = cfg_search(store, "certificates", tree.get());
  for (int32_t i = 0; const char *id = cfg_get_listelem(found, i); i++) ids.emplace_back(id);
  return ids;
}

void require_authority(cfg *store) {
  for (const char *path : {"services.ca.key", "services.ca.certificate", "services.ca.serial"})
    if (!cfg_get_by_path(store, path))
      throw failure(exit_code::not_found, "the store has no certificate authority",
                    fmt::format("'{}' is missing", path),
                    "make a store with 'twctl init', or provision the authority");
}

/// Revokes the certificate that the node holds, or refuses when that was not asked for.
void give_way(cfg *store, const cfg_node *node, bool replace) {
  cfg_certificate *held = cfg_node_get_cert_object(node);
  const char *id = cfg_certificate_get_id(held);
  if (!id || revoke_time_of(store, id)) return;
  if (!replace)
    throw failure(exit_code::conflict, fmt::format("{} holds a valid certificate", cfg_node_get_uuid(node)),
                  fmt::format("it is {}", id), "add --replace to revoke it and issue a new one");
  if (!cfg_certificate_expire_now(held) || !cfg_certificate_save(held))
    throw store_failure(store, fmt::format("cannot revoke {}", id));
}

struct issued {
  std::string id, node_id, common_name;
  certificate_facts facts;
};

/// Makes the whole edit: revokes what is replaced, issues, saves and refers to the new certificate.
issued make_edit(cfg *store, const issue_arguments &arguments) {
  require_authority(store);
  node_record node = find_node(store, arguments.node);
  issued result;
  result.node_id = cfg_node_get_uuid(node.get());
  const product *kind = find_product(view(cfg_node_get_product(node.get())));
  if (!kind || kind->how != reach::vpn)
    throw failure(exit_code::invalid_input, fmt::format("{} cannot hold a certificate", result.node_id),
                  "only tarnwell nodes have one");
  give_way(store, node.get(), arguments.replace);
  result.common_name = arguments.common_name.empty() ? result.node_id : arguments.common_name;
  for (const std::string &other : valid_certificates(store, result.common_name))
    if (!arguments.replace || other != view(cfg_certificate_get_id(cfg_node_get_cert_object(node.get()))))
      throw failure(exit_code::conflict,
                    fmt::format("'{}' has a valid certificate already", printable(result.common_name)),
                    fmt::format("it is {}", other),
                    fmt::format("choose another --cn, or revoke it with 'twctl cert revoke {}'", other));
  certificate_record certificate(cfg_certificate_new(store, result.common_name.c_str()));
  if (!certificate)
    throw failure(exit_code::failure,
                  fmt::format("no certificate could be issued for '{}'", printable(result.common_name)),
                  "the log (standard error or the journal) names the step that failed");
  if (!cfg_certificate_save(certificate.get()))
    throw store_failure(store, "cannot save the certificate (is there a list 'certificates'?)");
  result.id = cfg_certificate_get_id(certificate.get());
  result.facts = read_certificate(cfg_certificate_get_cert(certificate.get()));
  if (!cfg_node_update_reference(node.get(), cfg_get_by_id(store, result.node_id.c_str()), "cert",
                                 result.id.c_str()))
    throw store_failure(store, fmt::format("cannot give {} its certificate", result.node_id));
  return result;
}

void issue(const options &opts, const issue_arguments &arguments) {
  if (arguments.common_name.size() > longest_common_name || !is_utf8(arguments.common_name) ||
      has_control(arguments.common_name))
    throw failure(exit_code::invalid_input, "this common name cannot be used",
                  fmt::format("it must be at most {} printable characters", longest_common_name));
  session work(opts, session::access::write);
  issued made;
  // The authority's next serial number is part of the edit: of two issuers that read the same number one gets
  // a conflict, and starts over from the other's.
  outcome result =
      work.commit_retrying([&] { made = make_edit(work.store(), arguments); },
                           fmt::format("issue a certificate for {}", arguments.node), arguments.attempts);
  std::string id = result.dry_run ? std::string() : final_id(work.store(), made.id);
  sheet details;
  details.add("id", "ID", unless_empty(id));
  details.add("node_id", "Node", made.node_id);
  details.add("common_name", "Common name", made.common_name);
  details.add("serial", "Serial", made.facts.serial);
  details.add("not_after", "Valid until", utc_time(made.facts.not_after));
  work.report(result,
              fmt::format("Issued {} to {}: CN {}, serial {}, valid until {}.", id, made.node_id,
                          printable(made.common_name), made.facts.serial, utc_time(made.facts.not_after)),
              details.json());
}

/// The certificate with this ID, or the valid one with this common name.
certificate_record find_certificate(cfg *store, const std::string &reference) {
  if (reference.starts_with("certificates-"))
    if (certificate_record certificate(cfg_get_certificate_by_id(store, reference.c_str())); certificate)
      return certificate;
  std::vector<std::string> ids = valid_certificates(store, reference);
  if (ids.size() > 1)
    throw failure(exit_code::conflict,
                  fmt::format("'{}' names {} certificates", printable(reference), ids.size()), "",
                  "name one by its ID, see 'twctl cert list'");
  certificate_record certificate(ids.empty() ? nullptr : cfg_get_certificate_by_id(store, ids[0].c_str()));
  if (!certificate)
    throw failure(exit_code::not_found, fmt::format("there is no certificate '{}'", printable(reference)),
                  "it is no certificate's ID, nor the common name of a valid one", "see 'twctl cert list'");
  return certificate;
}

void add_facts(sheet &target, const certificate_facts &facts) {
  target.add("subject", "Subject", facts.subject);
  target.add("issuer", "Issuer", facts.issuer);
  target.add("serial", "Serial", facts.serial);
  target.add("not_before", "Valid from", utc_time(facts.not_before));
  target.add("not_after", "Valid until", utc_time(facts.not_after));
  target.add("fingerprint_sha256", "SHA-256", facts.fingerprint);
}

struct show_arguments {
  std::string reference, key_file;
  bool pem = false;
};

void show(const options &opts, const show_arguments &arguments) {
  session work(opts, session::access::read);
  certificate_record certificate = find_certificate(work.store(), arguments.reference);
  const char *pem = cfg_certificate_get_cert(certificate.get());
  if (!arguments.key_file.empty())
    hand_out_key(work, arguments.key_file, view(cfg_certificate_get_private_key(certificate.get())));
  if (arguments.pem && !opts.json()) {
    fmt::print("{}", view(pem));
    return;
  }
  const char *id = cfg_certificate_get_id(certificate.get());
  sheet result;
  result.add("id", "ID", cell_of(id));
  result.add("common_name", "Common name", cell_of(cfg_certificate_get_common_name(certificate.get())));
  add_facts(result, read_certificate(pem));
  result.add("revoked_at", "Revoked", unless_empty(revocation_of(work.store(), id)));
  if (arguments.pem) result.add("pem", "PEM", cell_of(pem));
  result.print(opts);
}

void show_authority(const options &opts, bool pem) {
  session work(opts, session::access::read);
  void *data = nullptr;
  size_t length = 0;
  if (!cfg_blob_value(cfg_get_by_path(work.store(), "services.ca.certificate"), &data, &length))
    throw failure(exit_code::not_found, "the store has no certificate authority", "",
                  "make a store with 'twctl init'");
  heap_block owned(data);
  std::string certificate(static_cast<char *>(data), length);
  if (pem && !opts.json()) {
    fmt::print("{}", certificate);
    return;
  }
  sheet result;
  add_facts(result, read_certificate(certificate.c_str()));
  if (pem) result.add("pem", "PEM", certificate);
  result.print(opts);
}

/// Which node holds which certificate: node IDs by certificate ID.
std::map<std::string, std::string> holders(cfg *store) {
  std::map<std::string, std::string> result;
  cfg_elem *nodes = cfg_get_by_path(store, "nodes");
  for (int32_t i = 0; cfg_elem *node = cfg_simple_get_listelem(store, nodes, i); i++)
    if (heap_text id = text_from(cfg_map_get_reference, store, node, "cert"))
      result.emplace(id.get(), cfg_get_listelem(nodes, i));
  return result;
}

void list(const options &opts, size_t limit) {
  session work(opts, session::access::read);
  std::map<std::string, std::string> nodes = holders(work.store());
  listing result("certificates", {{"id", "ID"},
                                  {"common_name", "COMMON NAME"},
                                  {"serial", "SERIAL", true},
                                  {"not_after", "VALID UNTIL"},
                                  {"revoked_at", "REVOKED"},
                                  {"node_id", "NODE"}});
  cfg_elem *certificates = cfg_get_by_path(work.store(), "certificates");
  for (int32_t i = 0; const char *id = cfg_get_listelem(certificates, i); i++) {
    if (limit && result.size() == limit) break;
    certificate_record certificate(cfg_get_certificate_by_id(work.store(), id));
    if (!certificate) throw store_failure(work.store(), fmt::format("cannot read {}", id));
    certificate_facts facts = read_certificate(cfg_certificate_get_cert(certificate.get()));
    auto node = nodes.find(id);
    result.add({std::string(id), cell_of(cfg_certificate_get_common_name(certificate.get())), facts.serial,
                utc_time(facts.not_after), unless_empty(revocation_of(work.store(), id)),
                unless_empty(node == nodes.end() ? "" : node->second)});
  }
  result.print(opts);
}

void revoke(const options &opts, const std::string &reference) {
  session work(opts, session::access::write);
  certificate_record certificate = find_certificate(work.store(), reference);
  std::string id = cfg_certificate_get_id(certificate.get());
  bool revoked_before = revoke_time_of(work.store(), id.c_str()) != 0;
  if (!revoked_before) {
    std::string_view name = view(cfg_certificate_get_common_name(certificate.get()));
    if (!opts.yes && !opts.dry_run && !confirm(fmt::format("Revoke {} ({})?", id, printable(name))))
      throw failure(exit_code::failure, "nothing was revoked", "it was not confirmed");
    if (!cfg_certificate_expire_now(certificate.get()) || !cfg_certificate_save(certificate.get()))
      throw store_failure(work.store(), fmt::format("cannot revoke {}", id));
  }
  outcome result = work.commit(fmt::format("revoke {}", id));
  sheet details;
  details.add("id", "ID", id);
  work.report(result,
              revoked_before ? fmt::format("{} is revoked already.", id) : fmt::format("Revoked {}.", id),
              details.json());
}

}  // namespace

void add_cert(CLI::App &program, const options &opts) {
  CLI::App *noun =
      program.add_subcommand("cert", "Certificates of nodes, issued by the appliance's authority");
  noun->require_subcommand(1);
  constexpr const char *what_a_certificate_is = "ID, or common name of a valid certificate";

  auto issuing = std::make_shared<issue_arguments>();
  CLI::App *verb = add_verb(noun, "issue", "Issue a certificate to a node",
                            "  twctl cert issue --node rack-12\n"
                            "  twctl cert issue --node nodes-12 --cn rack-12.lab --replace");
  verb->add_option("--node", issuing->node, "ID, name, serial number or VPN address of a tarnwell node")
      ->required();
  verb->add_option("--cn", issuing->common_name, "Common name; default: the node's ID");
  verb->add_flag("--replace", issuing->replace, "Revoke the certificate that the node holds");
  verb->add_option("--attempts", issuing->attempts, "How often to try when others issue at the same time")
      ->check(CLI::Range(1, 1000))
      ->capture_default_str();
  verb->callback([&opts, issuing] { issue(opts, *issuing); });

  auto showing = std::make_shared<show_arguments>();
  verb = add_verb(noun, "show", "Show a certificate",
                  "  twctl cert show certificates-3\n"
                  "  twctl cert show rack-12.lab --pem > rack-12.pem\n"
                  "  twctl cert show rack-12.lab --private-key rack-12.key");
  verb->add_option("certificate", showing->reference, what_a_certificate_is)->required();
  verb->add_flag("--pem", showing->pem, "Print the certificate itself");
  verb->add_option("--private-key", showing->key_file,
                   "Write the private key to this new file, with mode 0600");
  verb->callback([&opts, showing] { show(opts, *showing); });

  auto pem = std::make_shared<bool>(false);
  verb = add_verb(noun, "ca", "Show the authority's certificate",
                  "  twctl cert ca\n  twctl cert ca --pem > ca.pem");
  verb->add_flag("--pem", *pem, "Print the certificate itself");
  verb->callback([&opts, pem] { show_authority(opts, *pem); });

  auto limit = std::make_shared<size_t>(0);
  verb =
      add_verb(noun, "list", "List certificates", "  twctl cert list\n  twctl cert list --limit 10 -o json");
  add_limit(verb, *limit);
  verb->callback([&opts, limit] { list(opts, *limit); });

  auto reference = std::make_shared<std::string>();
  verb = add_verb(noun, "revoke", "Revoke a certificate",
                  "  twctl cert revoke certificates-3 --reason 'node stolen'\n"
                  "  twctl cert revoke rack-12.lab --yes");
  verb->add_option("certificate", *reference, what_a_certificate_is)->required();
  verb->callback([&opts, reference] { revoke(opts, *reference); });
}

}  // namespace twctl
