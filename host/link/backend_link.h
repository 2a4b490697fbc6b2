#pragma once

#include "framework/tlv_package.h"

#include <string>

namespace talvik {

using Package = CTLVPackageV3<TLVMsgHeadV3>;

/// One way to reach the management back end. Callable from any thread; exchanges are serialised.
class BackendLink {
public:
    /// Results of `exchange` that are the link's own; the back end's codes are passed up unchanged.
    static constexpr int kUnreachable = 0x1000001;  ///< no connection
    static constexpr int kTimedOut = 0x1000002;     ///< no answer within the limit
    static constexpr int kProtocolError =
        0x1000003;  ///< an answer that does not parse or does not fit

    virtual ~BackendLink() = default;

    /// Sends `request`. When the back end carries it out, appends the answer's records to `answer`,
    /// gives `answer` the answer's header and returns 0. Otherwise leaves `answer` as it was and
    /// returns the back end's result code or one of the above. Returns within the link's time limit
    /// and throws nothing but an allocation failure.
    virtual int exchange(Package& request, Package& answer) = 0;

    /// The link as the user named it, for log lines: "embedded" or "unix:PATH".
    virtual std::string name() const = 0;

protected:
    BackendLink() = default;
    BackendLink(const BackendLink&) = delete;
    BackendLink& operator=(const BackendLink&) = delete;
};

}  // namespace talvik
