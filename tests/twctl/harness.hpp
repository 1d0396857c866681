// Runs the built twctl, without a shell, on a store in a temporary directory.
#pragma once

#include <gtest/gtest.h>
#include <jansson.h>
#include <sys/types.h>
#include <twconfig.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace test {

struct outcome {
  int code = -1;  ///< exit code; -1 when a signal ended the program
  std::string out, err;
};

/// A parsed JSON text with short ways to look into it.
class json {
 public:
  explicit json(const std::string &text);
  explicit json(json_t *value) : value_(json_incref(value)) {}
  json(const json &other) : value_(json_incref(other.value_)) {}
  json &operator=(const json &) = delete;
  ~json() { json_decref(value_); }

  bool valid() const { return value_ != nullptr; }
  json operator[](const char *key) const { return json(json_object_get(value_, key)); }
  json operator[](int index) const { return json(json_array_get(value_, static_cast<size_t>(index))); }
  size_t size() const { return json_is_array(value_) ? json_array_size(value_) : json_object_size(value_); }
  std::string text() const { return json_is_string(value_) ? json_string_value(value_) : "(no string)"; }
  long long number() const { return json_is_integer(value_) ? json_integer_value(value_) : -999; }
  bool is_true() const { return json_is_true(value_); }
  bool is_false() const { return json_is_false(value_); }
  bool is_null() const { return json_is_null(value_); }
  /// The keys of an object in their order, joined by spaces.
  std::string keys() const;

 private:
  json_t *value_;
};

using arguments = std::vector<std::string>;

/// A program that was started and not yet waited for.
class running {
 public:
  /// Starts `program` with its output going to files `stem`.out and `stem`.err, its input coming from a file.
  running(const std::string &program, const arguments &args, const arguments &environment,
          const std::string &stem, const std::string &input);
  outcome wait();
  pid_t pid() const { return pid_; }

 private:
  std::string stem_;
  pid_t pid_ = -1;
};

std::string read_text(const std::string &path);
void write_text(const std::string &path, const std::string &text);

/// A temporary directory, and twctl with TWCTL_STORE naming a store in it.
class twctl_test : public ::testing::Test {
 protected:
  twctl_test();
  ~twctl_test() override;

  std::string path(const std::string &name) const { return directory_ + "/" + name; }
  std::string store_path() const { return path("store"); }

  running start(const arguments &args, const std::string &input = "");
  outcome run(const arguments &args, const std::string &input = "") { return start(args, input).wait(); }
  outcome run_program(const std::string &program, const arguments &args, const std::string &input = "");
  /// Runs a command that must succeed, with -o json, and gives its output.
  json run_json(arguments args, const std::string &input = "");
  /// Puts in place what 'twctl init' made when the tests were built: making the authority's key takes a
  /// second.
  void init(const std::string &name = "store");
  /// Gives the programs, and the test itself, a directory of their own for what this variable names.
  void own_directory(const std::string &variable);
  /// The whole store as text: two calls give the same text when nothing was written in between.
  std::string everything();
  /// The nouns and verbs that --help names below a command: those that go on, then those that do something.
  struct parts {
    arguments nouns, verbs;
  };
  parts parts_of(arguments command);
  /// All commands that do something, as the program's own help names them: {"tag", "value", "add"}.
  std::vector<arguments> all_commands(const arguments &below = {});

  /// The environment of the programs that are run, "NAME=value" each.
  arguments environment_;

 private:
  std::string directory_;
  int count_ = 0;
};

/// A command as one types it: "tag value add".
std::string words_of(const arguments &command);

/// A store that the test itself fills, and commits.
void change_store(const std::string &path, const std::function<void(cfg *)> &change);

/// A store that the test itself reads.
using open_store = std::unique_ptr<cfg, void (*)(cfg *)>;
open_store open_for_reading(const std::string &path);

}  // namespace test
