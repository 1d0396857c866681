// Lines in the system's log.
#pragma once

#include <twlog.h>

#include <source_location>
#include <string>

namespace searchd {

enum class level { error = 3, warning = 4, notice = 5, info = 6, debug = 7 };

inline void log(level priority, const std::string &message,
                const std::source_location &where = std::source_location::current()) {
  twlog_log_prio_codepos("services/searchd", where.function_name(), static_cast<int>(where.line()),
                         static_cast<int>(priority), "%s", message.c_str());
}

}  // namespace searchd
