#include "twin.hpp"

#include <algorithm>

namespace {

int note_change(void *context, const cfg_change *change) {
  static_cast<std::vector<std::string> *>(context)->push_back(
      change->op + std::string(change->id) + '|' + std::to_string(change->kind) + '|' +
      (change->old_text ? change->old_text : "") + '|' + (change->new_text ? change->new_text : ""));
  return 1;
}

std::string lines_of(std::vector<std::string> lines) {
  for (std::string &line : lines) line = without_provisional_ids(std::move(line));
  std::sort(lines.begin(), lines.end());
  std::string text;
  for (const std::string &line : lines) text += line + '\n';
  return text;
}

void expect_sound(cfg *store) {
  std::string problems;
  const auto note = [](void *context, const char *where, const char *problem) {
    *static_cast<std::string *>(context) += std::string(where) + ": " + problem + '\n';
    return 1;
  };
  EXPECT_EQ(cfg_verify(store, note, &problems), 1) << problems;
}

}  // namespace

// Provisional IDs are "{", 16 hexadecimal digits, "-", a number and "}".
std::string without_provisional_ids(std::string text) {
  constexpr std::size_t nonce = 16;
  for (std::size_t at = 0; (at = text.find('{', at)) != std::string::npos; ++at) {
    const std::size_t dash = at + 1 + nonce;
    if (text.find_first_not_of("0123456789abcdef", at + 1) != dash || text[dash] != '-') continue;
    const std::size_t end = text.find_first_not_of("0123456789", dash + 1);
    if (end != std::string::npos && text[end] == '}') text.erase(at + 1, end - at - 1);
  }
  return text;
}

std::string edit_text(cfg *store) {
  std::vector<std::string> changes;
  EXPECT_EQ(cfg_visit_changes(store, note_change, &changes), 1) << cfg_error_text(store);
  return without_provisional_ids(dump(store)) + '\n' + lines_of(std::move(changes));
}

std::string log_text(cfg *store, std::uint64_t revision) {
  std::vector<std::string> changes;
  EXPECT_EQ(cfg_visit_commit(store, revision, note_change, &changes), 1) << cfg_error_text(store);
  return lines_of(std::move(changes));
}

::testing::AssertionResult same_text(const std::string &text, const std::string &expected) {
  const auto [at, other] = std::mismatch(text.begin(), text.end(), expected.begin(), expected.end());
  if (at == text.end() && other == expected.end()) return ::testing::AssertionSuccess();
  const auto begin = static_cast<std::size_t>(std::max<std::ptrdiff_t>(at - text.begin() - 80, 0));
  return ::testing::AssertionFailure()
         << "\n  ..." << text.substr(begin, 240) << "\nbut expected\n  ..." << expected.substr(begin, 240);
}

void TwinTest::SetUp() {
  StoreTest::SetUp();
  whole = {store, true};
  single = {another_store(), false};
  both([](const Filler &filler) {
    cfg *handle = filler.store;
    cfg_elem *nodes = make_list(handle, "nodes");
    // Some shapes are there already, so that new ones do not begin with number 0.
    for (const char *name : {"one", "two"}) {
      cfg_elem *entry = append_named(handle, nodes, name);
      ASSERT_EQ(cfg_map_set_int(handle, put_map(handle, entry, "ssh"), "port", 22), 1);
      ASSERT_NE(append_named(handle, put_list(handle, entry, "ports"), "first"), nullptr);
    }
    ASSERT_NE(make_list(handle, "certs"), nullptr);
    ASSERT_NE(append_string(handle, make_list(handle, "labels"), "red"), nullptr);
    ASSERT_EQ(cfg_map_set_int(handle, make_map(handle, "map"), "kept", 1), 1);
    ASSERT_TRUE(commits(handle));
  });
}

void TwinTest::both(const Step &step) {
  for (const Filler &filler : {whole, single}) {
    SCOPED_TRACE(filler.whole ? "with content calls" : "with single calls");
    step(filler);
    if (HasFatalFailure()) return;
  }
}

void TwinTest::expect_alike() {
  EXPECT_EQ(cfg_has_changes(whole.store), cfg_has_changes(single.store));
  EXPECT_TRUE(same_text(edit_text(whole.store), edit_text(single.store)));
  EXPECT_TRUE(same_text(without_provisional_ids(export_text(whole.store)),
                        without_provisional_ids(export_text(single.store))));
}

void TwinTest::commit_both() {
  const bool changes = cfg_has_changes(whole.store) == 1;
  EXPECT_EQ(cfg_has_changes(single.store), changes ? 1 : 0);
  both([](const Filler &filler) { ASSERT_TRUE(commits(filler.store)); });
  if (HasFatalFailure()) return;
  if (changes) {
    EXPECT_TRUE(same_text(log_text(whole.store, cfg_committed_revision(whole.store)),
                          log_text(single.store, cfg_committed_revision(single.store))));
  }
  expect_alike();
  both([](const Filler &filler) { expect_sound(filler.store); });
  // What a handle that knows nothing yet reads.
  cfg *fresh = another_handle();
  EXPECT_TRUE(same_text(without_provisional_ids(dump(fresh)), without_provisional_ids(dump(single.store))));
  check_tree(fresh);
  close_handle(fresh);
}

void TwinTest::expect_alike_everywhere(const std::vector<Recipe> &recipes) {
  for (const bool look : {false, true}) {
    SCOPED_TRACE(look ? "having looked at the edit" : "without a look at the edit");
    both([&](const Filler &filler) {
      cfg_elem *fresh = cfg_new_list(filler.store);
      for (std::size_t i = 0; i < recipes.size(); ++i) {
        const std::string key = "key " + std::to_string(i);
        for (cfg_elem *list : {filler.at("nodes"), filler.at("nodes-1.ports"), filler.at("labels"), fresh}) {
          cfg_elem *entry = filler.append(list, recipes[i]);
          ASSERT_NE(entry, nullptr) << i << ": " << cfg_error_text(filler.store);
          ASSERT_TRUE(provisional(text_of(entry)));
        }
        for (const char *map : {"map", "nodes-2"}) {
          ASSERT_EQ(filler.put(filler.at(map), key.c_str(), recipes[i]), 1)
              << i << ": " << cfg_error_text(filler.store);
        }
      }
      ASSERT_EQ(cfg_add_mapelem(filler.store, filler.at("map"), "fresh", fresh), 1);
    });
    if (look) expect_alike();
    commit_both();
    if (HasFailure()) return;
  }
}

void TwinTest::expect_refused(cfg_code code) {
  both([&](const Filler &filler) { EXPECT_TRUE(refuses_commit(filler.store, code)); });
  EXPECT_STREQ(cfg_error_text(whole.store), cfg_error_text(single.store));
  expect_alike();
  both([&](const Filler &filler) { EXPECT_TRUE(refuses_commit(filler.store, code)); });
  expect_alike();
}
