#include "engine/lmdb_pages.hpp"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <optional>
#include <vector>

namespace twcfg {
namespace {

// The layout of LMDB 0.9's data files on 64-bit machines: all numbers in the machine's order. A meta page is
// a page header, the numbers below, and nothing else; a tree record in it is 48 bytes long.
constexpr std::uint32_t kMagic = 0xBEEFC0DE;
constexpr std::uint32_t kVersion = 1;
constexpr const char *kNewerVersion = "written by a newer LMDB than this library knows";
constexpr std::size_t kHeader = 16;
constexpr std::size_t kFreeTree = 40;
constexpr std::size_t kRecordTree = 88;
constexpr std::size_t kLastPage = 136;
constexpr std::size_t kTransaction = 144;
constexpr std::size_t kMetaEnd = 152;
constexpr std::size_t kNodeHeader = 8;
constexpr std::size_t kKeySize = 8;
constexpr std::uint64_t kNoPage = ~std::uint64_t{0};
constexpr std::uint16_t kMaxDepth = 32;
constexpr std::uint16_t kFixedMap = 0x01;
constexpr std::uint16_t kIntegerKey = 0x08;
constexpr std::uint16_t kBigData = 0x01;
constexpr std::uint16_t kBranch = 0x01, kLeaf = 0x02, kOverflow = 0x04, kMeta = 0x08, kKinds = 0x2f;

// Another process may be writing a meta page: what is wrong only for a moment is not wrong.
constexpr int kAttempts = 3;

class PageBytes {
 public:
  explicit PageBytes(std::size_t size) : bytes_(size) {}
  bool read(int file, std::uint64_t offset) {
    ssize_t got = 0;
    do got = pread(file, bytes_.data(), bytes_.size(), static_cast<off_t>(offset));
    while (got < 0 && errno == EINTR);
    return got >= 0 && static_cast<std::size_t>(got) == bytes_.size();
  }
  template <class Number>
  Number at(std::size_t offset) const {
    Number number{};
    std::memcpy(&number, bytes_.data() + offset, sizeof number);
    return number;
  }
  std::uint64_t number() const { return at<std::uint64_t>(0); }
  std::uint16_t kind() const { return at<std::uint16_t>(10) & kKinds; }
  std::uint16_t lower() const { return at<std::uint16_t>(12); }
  std::uint16_t upper() const { return at<std::uint16_t>(14); }
  std::uint32_t overflow_count() const { return at<std::uint32_t>(12); }

 private:
  std::vector<char> bytes_;
};

PageTree tree_at(const PageBytes &page, std::size_t offset) {
  PageTree tree;
  tree.flags = page.at<std::uint16_t>(offset + 4);
  tree.depth = page.at<std::uint16_t>(offset + 6);
  tree.entries = page.at<std::uint64_t>(offset + 32);
  tree.root = page.at<std::uint64_t>(offset + 40);
  return tree;
}

bool plausible(const PageTree &tree, std::uint64_t last_page) {
  if (tree.root == kNoPage) return tree.depth == 0 && tree.entries == 0;
  return tree.depth > 0 && tree.depth <= kMaxDepth && tree.root >= 2 && tree.root <= last_page;
}

bool valid_page_size(std::size_t size) { return size >= 512 && size <= 65536 && (size & (size - 1)) == 0; }

// What is wrong with a meta page; its numbers go to `meta`.
std::string parse_meta(const PageBytes &page, MetaPage &meta) {
  if ((page.kind() & kMeta) == 0 || page.at<std::uint32_t>(kHeader) != kMagic) return "no LMDB data file";
  if (page.at<std::uint32_t>(kHeader + 4) > kVersion) return kNewerVersion;
  if (page.at<std::uint32_t>(kHeader + 4) != kVersion) return "an LMDB data file of another version";
  meta.page_size = page.at<std::uint32_t>(kFreeTree);
  meta.last_page = page.at<std::uint64_t>(kLastPage);
  meta.transaction = page.at<std::uint64_t>(kTransaction);
  meta.free_pages = tree_at(page, kFreeTree);
  meta.records = tree_at(page, kRecordTree);
  if (!valid_page_size(meta.page_size)) return "an impossible page size";
  // A fixed map would let the file choose where in this process's memory it is mapped.
  if ((meta.free_pages.flags & kFixedMap) != 0) return "asks for a fixed address";
  if (meta.last_page < 1 || meta.last_page > (std::uint64_t{1} << 48)) return "an impossible page count";
  return {};
}

// Both meta pages, the newer one first.
std::string read_meta_pages(int file, MetaPage (&metas)[2]) {
  PageBytes page(kMetaEnd);
  if (!page.read(file, 0)) return "shorter than its first page";
  if (std::string wrong = parse_meta(page, metas[0]); !wrong.empty()) return wrong;
  if (!page.read(file, metas[0].page_size)) return "shorter than its second page";
  if (std::string wrong = parse_meta(page, metas[1]); !wrong.empty()) return wrong;
  // Transactions are written to the two pages in turn, the even ones to the first. A new file has no
  // transaction yet.
  const std::uint64_t even = metas[0].transaction;
  const std::uint64_t odd = metas[1].transaction;
  const bool in_turn = (even == 0 && odd == 0) || (even % 2 == 0 && (odd == even + 1 || odd + 1 == even));
  if (!in_turn || metas[0].page_size != metas[1].page_size)
    return "its first two pages contradict each other";
  if (metas[1].transaction > metas[0].transaction) std::swap(metas[0], metas[1]);
  return {};
}

// A missing tree of records is legal for LMDB, but not for a store, whose first commit makes its format
// record.
std::string meta_problem(int file, MetaPage &newest) {
  MetaPage metas[2];
  if (std::string wrong = read_meta_pages(file, metas); !wrong.empty()) return wrong;
  newest = metas[0];
  // The older one may contradict itself: LMDB leaves it so when it could not write it.
  if (!plausible(newest.free_pages, newest.last_page) || !plausible(newest.records, newest.last_page))
    return "the root of a tree lies outside the file";
  if (newest.records.root == kNoPage || (newest.records.flags & 0x7fff) != kIntegerKey)
    return "this is not the data file of a configuration store";
  // Only now: a writer makes the file longer before it counts the pages.
  struct stat info {};
  if (fstat(file, &info) != 0) return std::strerror(errno);
  const std::uint64_t counted = (newest.last_page + 1) * newest.page_size;
  if (static_cast<std::uint64_t>(info.st_size) < counted)
    return "truncated: " + std::to_string(info.st_size) + " bytes are left of at least " +
           std::to_string(counted);
  PageBytes root(newest.page_size);
  const std::uint64_t number = newest.records.root;
  if (!root.read(file, number * newest.page_size)) return "its root page cannot be read";
  if (root.number() != number || (root.kind() != kBranch && root.kind() != kLeaf))
    return "its root page is damaged";
  return {};
}

// Walks the pages of one committed state.
class PageWalk {
 public:
  PageWalk(int file, const MetaPage &meta, const Engine::Problem &problem)
      : file_(file), meta_(meta), problem_(problem), seen_(meta.last_page + 1), page_(meta.page_size) {}

  void walk(const PageTree &tree, bool is_free_list) {
    is_free_list_ = is_free_list;
    entries_ = 0;
    previous_key_.reset();
    if (tree.root != kNoPage) visit(tree.root, tree.depth);
    if (entries_ != tree.entries)
      problem_("tree",
               "holds " + std::to_string(entries_) + " entries, but counts " + std::to_string(tree.entries));
  }

 private:
  void report(std::uint64_t page, const std::string &what) { problem_("page " + std::to_string(page), what); }

  // Marks `count` pages as used; false when one is outside the file or used already.
  bool claim(std::uint64_t first, std::uint64_t count) {
    if (first < 2 || first > meta_.last_page || count > meta_.last_page + 1 - first) {
      report(first, "is referred to, but lies outside the file");
      return false;
    }
    for (std::uint64_t page = first; page < first + count; page++) {
      if (seen_[page]) {
        report(page, "is used twice");
        return false;
      }
      seen_[page] = true;
    }
    return true;
  }

  void visit(std::uint64_t number, unsigned levels) {
    if (!claim(number, 1)) return;
    PageBytes page(meta_.page_size);
    if (!page.read(file_, number * meta_.page_size)) return report(number, "cannot be read");
    if (page.number() != number || page.kind() != (levels == 1 ? kLeaf : kBranch))
      return report(number, "is not the page that it should be");
    if (page.lower() < kHeader || page.lower() > page.upper() || page.upper() > meta_.page_size)
      return report(number, "has impossible bounds");
    const std::size_t count = (page.lower() - kHeader) / 2U;
    for (std::size_t i = 0; i < count; i++) {
      const std::size_t node = page.at<std::uint16_t>(kHeader + 2 * i);
      if (node < page.upper() || node + kNodeHeader > meta_.page_size)
        return report(number, "has a node outside of it");
      if (levels == 1)
        leaf_node(number, page, node);
      else
        branch_node(number, page, node, i, levels);
    }
  }

  void branch_node(std::uint64_t number, const PageBytes &page, std::size_t node, std::size_t index,
                   unsigned levels) {
    const std::uint64_t child =
        page.at<std::uint32_t>(node) | static_cast<std::uint64_t>(page.at<std::uint16_t>(node + 4)) << 32U;
    const std::size_t key = page.at<std::uint16_t>(node + 6);
    // The first key of a branch page is never looked at.
    if (index > 0 && (key != kKeySize || node + kNodeHeader + key > meta_.page_size))
      return report(number, "has a key of a bad length");
    visit(child, levels - 1);
  }

  void leaf_node(std::uint64_t number, const PageBytes &page, std::size_t node) {
    entries_++;
    const std::size_t size = page.at<std::uint32_t>(node);
    const auto flags = page.at<std::uint16_t>(node + 4);
    const std::size_t data = node + kNodeHeader + kKeySize;
    if (page.at<std::uint16_t>(node + 6) != kKeySize || data > meta_.page_size)
      return report(number, "has a key of a bad length");
    const auto key = page.at<std::uint64_t>(node + kNodeHeader);
    if (previous_key_ && *previous_key_ >= key) report(number, "has a key out of order");
    previous_key_ = key;
    if ((flags & ~kBigData) != 0) return report(number, "has a value of an unknown kind");
    if (data + ((flags & kBigData) != 0 ? sizeof(std::uint64_t) : size) > meta_.page_size)
      return report(number, "has a value that reaches beyond it");
    std::uint64_t offset = number * meta_.page_size + data;
    if ((flags & kBigData) != 0) {
      const auto first = page.at<std::uint64_t>(data);
      if (!overflow(first, size)) return;
      offset = first * meta_.page_size + kHeader;
    }
    if (is_free_list_) free_list(number, offset, size);
  }

  bool overflow(std::uint64_t first, std::size_t size) {
    if (first < 2 || first > meta_.last_page || !page_.read(file_, first * meta_.page_size)) {
      report(first, "is referred to, but lies outside the file");
      return false;
    }
    const std::uint64_t pages = page_.overflow_count();
    if (page_.number() != first || page_.kind() != kOverflow || pages * meta_.page_size < kHeader + size) {
      report(first, "is not the start of a long value of " + std::to_string(size) + " bytes");
      return false;
    }
    return claim(first, pages);
  }

  // A list of free pages: how many, and their numbers.
  void free_list(std::uint64_t number, std::uint64_t offset, std::size_t size) {
    PageBytes list(size);
    if (size < sizeof(std::uint64_t) || !list.read(file_, offset))
      return report(number, "has a list of free pages that cannot be read");
    const auto count = list.at<std::uint64_t>(0);
    if (count > size / sizeof(std::uint64_t) - 1)
      return report(number, "has a list of free pages with a bad length");
    for (std::uint64_t i = 1; i <= count; i++)
      if (!claim(list.at<std::uint64_t>(i * sizeof(std::uint64_t)), 1)) return;
  }

  int file_;
  const MetaPage &meta_;
  const Engine::Problem &problem_;
  std::vector<bool> seen_;
  PageBytes page_;
  bool is_free_list_ = false;
  std::uint64_t entries_ = 0;
  std::optional<std::uint64_t> previous_key_;
};

}  // namespace

Failure check_meta_pages(int file, const std::string &path, MetaPage &newest) {
  std::string wrong;
  for (int attempt = 0; attempt < kAttempts; attempt++) {
    wrong = meta_problem(file, newest);
    if (wrong.empty()) return {};
  }
  return {wrong == kNewerVersion ? CFG_E_VERSION : CFG_E_CORRUPT, path + ": " + wrong};
}

bool check_all_pages(int file, std::uint64_t transaction, const Engine::Problem &problem) {
  MetaPage metas[2];
  std::string wrong = "unread";
  for (int attempt = 0; attempt < kAttempts && !wrong.empty(); attempt++)
    wrong = read_meta_pages(file, metas);
  if (!wrong.empty()) {
    problem("meta pages", wrong);
    return true;
  }
  const auto *meta =
      std::find_if(std::begin(metas), std::end(metas),
                   [transaction](const MetaPage &candidate) { return candidate.transaction == transaction; });
  if (meta == std::end(metas)) return false;
  PageWalk walk(file, *meta, problem);
  walk.walk(meta->records, false);
  walk.walk(meta->free_pages, true);
  return true;
}

}  // namespace twcfg
