#pragma once

#include "framework/tlv_package.h"

/// The host's command channel to the management back end.
class CSNMP_Configuration {
public:
    /// The channel of this process, never null. Callable from any thread.
    static CSNMP_Configuration* instance();

    /// Sends `request` to the back end, appends the records of its answer to `answer` (whose header
    /// becomes the answer's) and returns the result code: 0 for success, the back end's own code
    /// when it refused, another non-zero code when it could not be reached, answered nonsense or
    /// not in time. The first record's `ullRecordId` is the command number. On failure `answer` may
    /// be empty. Never waits longer than the configured time limit and throws nothing but an
    /// allocation failure. The module passes false for both flags, which are the host's own.
    int configure(CTLVPackageV3<TLVMsgHeadV3>& request, CTLVPackageV3<TLVMsgHeadV3>& answer,
                  bool bAsync, bool bBroadcast);

private:
    CSNMP_Configuration();
    ~CSNMP_Configuration();
    CSNMP_Configuration(const CSNMP_Configuration&) = delete;
    CSNMP_Configuration& operator=(const CSNMP_Configuration&) = delete;
};
