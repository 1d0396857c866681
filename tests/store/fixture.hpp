// A store in a fresh place, once per engine. Every suite of this folder derives from StoreTest and is
// instantiated with STORE_TEST_ON_BOTH_ENGINES.
#pragma once

#include <gtest/gtest.h>
#include <twconfig.h>

#include <map>
#include <string>
#include <vector>

enum class EngineKind { kLmdb, kMemory };

class StoreTest : public ::testing::TestWithParam<EngineKind> {
 protected:
  void SetUp() override;
  void TearDown() override;

  // One more handle on the same store; closed with the test.
  cfg *another_handle();
  void close_handle(cfg *handle);
  // Closes every handle and opens the store again. A memory store would end with its last handle, so there
  // the new handle is opened first.
  void reopen();
  // An empty store of the same engine elsewhere; closed with the test.
  cfg *another_store();
  // One more handle on one of those.
  cfg *another_handle_of(cfg *other);

  std::string path_;       // of the LMDB store; unset for memory
  std::string directory_;  // the test's own, removed with it
  cfg *store = nullptr;    // the handle that most tests need

 private:
  cfg *open_place(const std::string &place);
  std::string place_;
  std::vector<cfg *> handles_;
  std::map<cfg *, std::string> others_;  // where those of another_store() are
  int places_ = 0;
};

inline std::string engine_name(const ::testing::TestParamInfo<EngineKind> &info) {
  return info.param == EngineKind::kLmdb ? "lmdb" : "memory";
}

#define STORE_TEST_ON_BOTH_ENGINES(suite)                                                             \
  INSTANTIATE_TEST_SUITE_P(Engines, suite, ::testing::Values(EngineKind::kLmdb, EngineKind::kMemory), \
                           engine_name)

// Commits, and tells the store's error when that fails.
::testing::AssertionResult commits(cfg *store, const cfg_commit_note *note = nullptr);
// A commit that must fail with a code, leaving the edit.
::testing::AssertionResult refuses_commit(cfg *store, cfg_code code);
// What a call returned must be 0 and the handle's code must be this one.
::testing::AssertionResult failed_with(cfg *store, int result, cfg_code code);
