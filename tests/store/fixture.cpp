#include "fixture.hpp"

#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>

void StoreTest::SetUp() {
  const char *base = getenv("TMPDIR");
  std::string pattern = std::string(base && *base ? base : "/tmp") + "/store_test.XXXXXX";
  ASSERT_NE(mkdtemp(pattern.data()), nullptr) << pattern;
  directory_ = pattern;
  place_ = directory_ + "/store";
  if (GetParam() == EngineKind::kLmdb) path_ = place_;
  store = open_place(place_);
  ASSERT_NE(store, nullptr);
}

void StoreTest::TearDown() {
  for (cfg *handle : handles_) cfg_close(handle);
  handles_.clear();
  if (!directory_.empty()) std::filesystem::remove_all(directory_);
}

// The directory's name serves as the name of a memory store: no two tests share one.
cfg *StoreTest::open_place(const std::string &place) {
  cfg_failure failure{};
  cfg *handle = GetParam() == EngineKind::kLmdb ? cfg_open(place.c_str(), CFG_OPEN_CREATE, &failure)
                                                : cfg_open_memory(place.c_str(), &failure);
  if (!handle) {
    ADD_FAILURE() << "cannot open " << place << ": " << failure.code << " " << failure.text;
    return nullptr;
  }
  handles_.push_back(handle);
  return handle;
}

cfg *StoreTest::another_handle() { return open_place(place_); }

cfg *StoreTest::another_store() {
  const std::string place = directory_ + "/store" + std::to_string(++places_);
  cfg *handle = open_place(place);
  others_[handle] = place;
  return handle;
}

cfg *StoreTest::another_handle_of(cfg *other) { return open_place(others_.at(other)); }

void StoreTest::close_handle(cfg *handle) {
  handles_.erase(std::remove(handles_.begin(), handles_.end(), handle), handles_.end());
  cfg_close(handle);
  if (handle == store) store = nullptr;
}

void StoreTest::reopen() {
  std::vector<cfg *> old;
  old.swap(handles_);
  cfg *fresh = nullptr;
  if (GetParam() == EngineKind::kMemory) fresh = open_place(place_);
  for (cfg *handle : old) cfg_close(handle);
  store = fresh ? fresh : open_place(place_);
  ASSERT_NE(store, nullptr);
}

::testing::AssertionResult commits(cfg *store, const cfg_commit_note *note) {
  if (cfg_commit(store, note) == 1) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure()
         << "commit failed: " << cfg_error_code(store) << " " << cfg_error_text(store);
}

::testing::AssertionResult failed_with(cfg *store, int result, cfg_code code) {
  if (result != 0) return ::testing::AssertionFailure() << "returned " << result;
  if (cfg_error_code(store) != code)
    return ::testing::AssertionFailure()
           << "code is " << cfg_error_code(store) << " (" << cfg_error_text(store) << "), not " << code;
  if (!*cfg_error_text(store)) return ::testing::AssertionFailure() << "the error has no text";
  return ::testing::AssertionSuccess();
}

::testing::AssertionResult refuses_commit(cfg *store, cfg_code code) {
  return failed_with(store, cfg_commit(store, nullptr), code);
}
