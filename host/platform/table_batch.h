#pragma once

#include "framework/tlv_package.h"

#include <chrono>
#include <functional>

/// What the table engine of this host, the bodies of `CSnmpTableBase`, and the code that drives it
/// in batches agree on. A query's rows come by ascending key; the last record is an end mark if
/// nothing follows them. A query gets at least one row or the end mark.
namespace talvik {

/// A record that holds a cell with this tag is no row: nothing follows what stands before it. Back
/// ends mark the end of their data in the same way.
constexpr unsigned short kEndMarkTag = 4095;

/// Whether `record` is an end mark.
bool isEndMark(const CTLVRecordV3& record);

/// Appends an end mark.
void appendEndMark(CTLVPackageV3<TLVMsgHeadV3>& package);

using BatchClock = std::function<std::chrono::steady_clock::time_point()>;

/// How long a query goes on asking the back end for the next batch: when none has given a row yet,
/// or, of a whole table, when it is not complete. Forgets which records that cannot be shown were
/// logged. On the thread that queries; `clock` is for tests.
void limitTableQueries(std::chrono::milliseconds limit,
                       BatchClock clock = &std::chrono::steady_clock::now);

}  // namespace talvik
