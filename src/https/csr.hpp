// The record of the certificate request, shared by the files of this folder.
#ifndef TW_HTTPS_CSR_HPP
#define TW_HTTPS_CSR_HPP

#include <twobject/https.h>

#include <vector>

#include "record/text.hpp"

// It has no ID: there is one request. All its texts are wiped: the request itself holds the password in
// clear.
struct cfg_csr {
  ::cfg *cfg = nullptr;
  tw::secret common_name;
  tw::secret org_unit;
  tw::secret organization;
  tw::secret locality;
  tw::secret state;
  tw::secret country;
  tw::secret email;
  tw::secret challenge_password;
  int32_t key_length = 0;
  tw::secret private_key;
  tw::secret csr;
  std::vector<tw::secret> former;  // what fields held before they were set again
};

namespace tw {

// Gives a field a new text. What it held stays with the record until that is freed: callers go on with what a
// getter answered when the field has been set again. False, with the field as it was, without memory.
bool replace_text(cfg_csr &csr, secret cfg_csr::*field, secret &&fresh) noexcept;

}  // namespace tw

#endif
