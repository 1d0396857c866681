// The certificate record, shared by the files of this folder.
#ifndef TW_CERTIFICATE_CERTIFICATE_HPP
#define TW_CERTIFICATE_CERTIFICATE_HPP

#include <twobject/certificate.h>

#include "record/view.hpp"

struct cfg_certificate : tw::object_view {
  tw::text_block texts;
  tw::text common_name;
  tw::text cert;
  tw::secret private_key;
  int32_t revoke_time = 0;
};

#endif
