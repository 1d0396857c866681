// twctl https cert: the certificate that the web server shows.
#include <fmt/format.h>

#include <ctime>

#include "appliance/ca.hpp"
#include "cli/failure.hpp"
#include "cli/files.hpp"
#include "cli/session.hpp"
#include "cli/text.hpp"
#include "commands.hpp"

namespace twctl {

namespace {

constexpr size_t longest_file = 64 * 1024;  // a certificate and those of its issuers

struct show_arguments {
  std::string key_file;
  bool pem = false;
};

https_certificate_record installed(cfg *store) {
  https_certificate_record details(cfg_get_https_cert_details(store));
  if (details) return details;
  if (!cfg_get_by_path(store, "services.https.certificate"))
    throw failure(exit_code::not_found, "the web server has no certificate", "",
                  "install one with 'twctl https cert install'");
  throw failure(exit_code::failure, "the installed certificate cannot be read",
                "it or its private key is no PEM text, the key is no RSA key or needs a pass phrase, or the "
                "certificate has no subject");
}

void show(const options &opts, const show_arguments &arguments) {
  session work(opts, session::access::read);
  https_certificate_record details = installed(work.store());
  if (!arguments.key_file.empty()) hand_out_key(work, arguments.key_file, view(details->private_key));
  if (arguments.pem && !opts.json()) {
    fmt::print("{}", details->certificate);
    return;
  }
  certificate_facts facts = read_certificate(details->certificate);
  sheet result;
  result.add("common_name", "Common name", unless_empty(details->common_name));
  result.add("organization", "Organization", unless_empty(details->organization));
  result.add("org_unit", "Unit", unless_empty(details->org_unit));
  result.add("locality", "Locality", unless_empty(details->locality));
  result.add("state", "State", unless_empty(details->state));
  result.add("country", "Country", unless_empty(details->country));
  result.add("email", "E-mail", unless_empty(details->email));
  result.add("key_length", "Key length", int64_t{details->key_length});
  result.add("issuer", "Issuer", facts.issuer);
  result.add("serial", "Serial", facts.serial);
  result.add("not_before", "Valid from", utc_time(facts.not_before));
  result.add("not_after", "Valid until", utc_time(facts.not_after));
  result.add("fingerprint_sha256", "SHA-256", facts.fingerprint);
  if (arguments.pem) result.add("pem", "PEM", cell_of(details->certificate));
  result.print(opts);
}

struct install_arguments {
  std::string certificate_file, key_file;
};

/// The private key of the file that was named, or else that of the request in progress.
secret find_key(cfg *store, const std::string &file) {
  if (!file.empty()) return read_file(file, longest_file);
  csr_record csr(cfg_get_https_csr(store));
  std::string_view key = view(cfg_csr_get_private_key(csr.get()));
  if (key.empty())
    throw failure(exit_code::not_found, "there is no private key for the certificate",
                  "no request is in progress", "name the key's file with --key FILE");
  return secret(key);
}

void install(const options &opts, const install_arguments &arguments) {
  secret certificate = read_file(arguments.certificate_file, longest_file);
  session work(opts, session::access::write);
  secret key = find_key(work.store(), arguments.key_file);
  require_pair(certificate.c_str(), key.c_str());
  // The call answers 1 whatever becomes of its writes: what is read back tells.
  if (!cfg_set_https_cert(work.store(), certificate.c_str(), key.c_str()))
    throw store_failure(work.store(), "cannot install the certificate");
  https_certificate_record details(cfg_get_https_cert_details(work.store()));
  if (!details)
    throw failure(exit_code::invalid_input, "this certificate cannot be installed",
                  "it needs a subject, and an RSA key");
  if (certificate.view() != details->certificate || key.view() != details->private_key)
    throw store_failure(work.store(), "cannot install the certificate");
  certificate_facts facts = read_certificate(details->certificate);
  std::time_t now = std::time(nullptr);
  if (facts.not_after < now || facts.not_before > now) work.note("This certificate is not valid now.");
  outcome result = work.commit("install an https certificate");
  sheet told;
  told.add("subject", "Subject", facts.subject);
  told.add("issuer", "Issuer", facts.issuer);
  told.add("not_after", "Valid until", utc_time(facts.not_after));
  work.report(result,
              fmt::format("Installed the certificate of {}, valid until {}.", printable(facts.subject),
                          utc_time(facts.not_after)),
              told.json());
}

}  // namespace

void add_https_cert(CLI::App *https, const options &opts) {
  CLI::App *noun = https->add_subcommand("cert", "The certificate that it shows");
  noun->require_subcommand(1);

  auto showing = std::make_shared<show_arguments>();
  CLI::App *verb = add_verb(noun, "show", "Show the installed certificate",
                            "  twctl https cert show\n"
                            "  twctl https cert show --pem > web.pem\n"
                            "  twctl https cert show --private-key web.key");
  verb->add_flag("--pem", showing->pem, "Print the certificate itself");
  verb->add_option("--private-key", showing->key_file,
                   "Write the private key to this new file, with mode 0600");
  verb->callback([&opts, showing] { show(opts, *showing); });

  auto installing = std::make_shared<install_arguments>();
  verb = add_verb(noun, "install", "Install a certificate, and end the request in progress",
                  "  twctl https cert install web.pem                  (answers the request in progress)\n"
                  "  twctl https cert install web.pem --key web.key\n"
                  "  twctl https cert install web.pem --dry-run");
  verb->add_option("certificate", installing->certificate_file,
                   "File of the certificate, PEM; those of its issuers may follow")
      ->required();
  verb->add_option("--key", installing->key_file,
                   "File of its private key, PEM without pass phrase; default: the request's key");
  verb->callback([&opts, installing] { install(opts, *installing); });
}

}  // namespace twctl
