// The records of libtwobject in owners, and an owner for Jansson's values.
#pragma once

#include <jansson.h>
#include <twconfig.h>

#include <twobject.hpp>

namespace twctl {

// Owners and ranges have one name, here as there.
using namespace twobject;

/// json_decref() has no linkage of its own, which a type that headers share needs.
inline void release_json(json_t *value) { json_decref(value); }
using json_value = owner<json_t, release_json>;

}  // namespace twctl
