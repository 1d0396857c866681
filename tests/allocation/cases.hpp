// The tables of the functions whose allocations are refused, one per family, in the order of their names.
#ifndef TW_TESTS_ALLOCATION_CASES_HPP
#define TW_TESTS_ALLOCATION_CASES_HPP

#include <span>

#include "allocation/sweep.hpp"

namespace allocation {

extern const std::span<const Case> system_cases;
extern const std::span<const Case> certificate_cases;
extern const std::span<const Case> https_cases;
extern const std::span<const Case> node_cases;
extern const std::span<const Case> node_part_cases;
extern const std::span<const Case> port_cases;
extern const std::span<const Case> node_runtime_cases;
extern const std::span<const Case> enrollment_cases;
extern const std::span<const Case> search_cases;
extern const std::span<const Case> smart_group_cases;
extern const std::span<const Case> tag_cases;
extern const std::span<const Case> template_cases;
extern const std::span<const Case> template_data_cases;
extern const std::span<const Case> users_groups_cases;
extern const std::span<const Case> role_cases;
extern const std::span<const Case> acl_cases;
extern const std::span<const Case> user_cases;
extern const std::span<const Case> group_cases;
extern const std::span<const Case> auth_cases;
extern const std::span<const Case> bundle_cases;
extern const std::span<const Case> network_cases;
extern const std::span<const Case> service_cases;
extern const std::span<const Case> push_cases;

}  // namespace allocation

#endif
