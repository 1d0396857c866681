// The options that every command understands.
#pragma once

#include <string>

namespace twctl {

enum class output_format { table, json };

struct options {
  std::string store = "/var/lib/twobject/store";
  output_format output = output_format::table;
  bool dry_run = false;
  bool yes = false;
  bool quiet = false;
  std::string who;
  std::string reason;

  std::string command;  ///< "user add": what the commit log says was done

  bool json() const { return output == output_format::json; }
};

}  // namespace twctl
