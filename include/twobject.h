/*
 * libtwobject: the appliance's configuration as typed records.
 *
 * A record is read from the store, looked at and changed with getters and setters, written back with its save
 * function and released with its free function. The rules that hold for every function stand, numbered, in
 * twobject/common.h.
 */
#ifndef TWOBJECT_H
#define TWOBJECT_H

#include <twobject/acl.h>
#include <twobject/auth.h>
#include <twobject/boot_flag.h>
#include <twobject/bundle.h>
#include <twobject/certificate.h>
#include <twobject/common.h>
#include <twobject/console_gateway.h>
#include <twobject/enrollment.h>
#include <twobject/external_endpoint.h>
#include <twobject/group.h>
#include <twobject/https.h>
#include <twobject/net_address.h>
#include <twobject/net_conn.h>
#include <twobject/net_physif.h>
#include <twobject/node.h>
#include <twobject/node_auth.h>
#include <twobject/node_group.h>
#include <twobject/node_interface.h>
#include <twobject/node_runtime.h>
#include <twobject/node_tag.h>
#include <twobject/node_user.h>
#include <twobject/ntp.h>
#include <twobject/port.h>
#include <twobject/push_exec_ctxt.h>
#include <twobject/push_node_ctxt.h>
#include <twobject/role.h>
#include <twobject/search.h>
#include <twobject/smart_groups.h>
#include <twobject/system.h>
#include <twobject/tag.h>
#include <twobject/template.h>
#include <twobject/template_auth.h>
#include <twobject/template_script.h>
#include <twobject/template_users_groups.h>
#include <twobject/user.h>

#endif
