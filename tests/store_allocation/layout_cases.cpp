#include "store_allocation/cases.hpp"

namespace store_allocation {
namespace {

void base_layout(EngineKind) {
  EXPECT_EQ(plain_sweep([] {
              size_t count = 0;
              const cfg_place *places = with_refusals([&] { return cfg_base_layout(&count); });
              return places != nullptr && count > 0;
            }),
            0);
}

const Case rows[] = {
    {"cfg_base_layout", base_layout, kPlain},
};

}  // namespace

const std::span<const Case> layout_cases = rows;

}  // namespace store_allocation
