/*
 * The C++ face of libtwobject: owners, ranges and texts over the C interface, for C++20. Header only.
 *
 * Records are released whole, also what the C interface's free functions leave to callers on purpose: who
 * uses nothing but the face leaks nothing. There are four things here, and each has one name:
 *
 * - `<type>_record`, `<type>_list`: owners, std::unique_ptr of the C types. What a C function gives to its
 * caller goes into one: `node_record node(cfg_get_node_by_id(store, id));`. An owner is NULL when the call
 * failed.
 * - `heap_text`, `secret_text`, `heap_texts`: owners of heap strings; a secret one is wiped.
 * - `text_of()`: a borrowed text that may be NULL as std::optional<std::string_view>.
 * - Ranges: `entries(list)` loads the records of a list, `nodes(store)`, `ports(node)`, `values(tag)` and so
 * on those of a store or a record. They borrow what they are made from, and read it as they are walked
 * through.
 *
 * Owners own and do nothing else: functions, those of the face too, take the plain pointers that the C
 * functions take (`node.get()`). What owners hold lives as the C headers say; one thing is stricter: a record
 * that another was read from or added to (a group's new user, a push's store) must outlive it where the C
 * headers say so.
 *
 * The face throws nothing but std::bad_alloc, and this only where it fills a container of the standard
 * library.
 */
#ifndef TWOBJECT_HPP
#define TWOBJECT_HPP

#include <twobject.h>
#include <twobject/access.hpp>
#include <twobject/appliance.hpp>
#include <twobject/nodes.hpp>
#include <twobject/owner.hpp>
#include <twobject/pushes.hpp>
#include <twobject/searches.hpp>
#include <twobject/store.hpp>
#include <twobject/tags.hpp>
#include <twobject/templates.hpp>

#endif
