#include "tools/snmp_status.h"

#include <cstddef>
#include <iterator>

namespace talvik::ctl {

std::string statusName(int status)
{
    static constexpr const char* kNames[] = {"noError",
                                             "tooBig",
                                             "noSuchName",
                                             "badValue",
                                             "readOnly",
                                             "genErr",
                                             "noAccess",
                                             "wrongType",
                                             "wrongLength",
                                             "wrongEncoding",
                                             "wrongValue",
                                             "noCreation",
                                             "inconsistentValue",
                                             "resourceUnavailable",
                                             "commitFailed",
                                             "undoFailed",
                                             "authorizationError",
                                             "notWritable",
                                             "inconsistentName"};
    if (status < 0 || static_cast<std::size_t>(status) >= std::size(kNames)) {
        return "error " + std::to_string(status);
    }
    return kNames[status];
}

}  // namespace talvik::ctl
