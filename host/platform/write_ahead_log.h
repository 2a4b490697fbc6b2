#pragma once

#include <string>

namespace talvik {

/// Why the write-ahead log `path` of an SQLite database cannot be what a process left that was
/// killed, or a power cut; empty if it can. A missing log is fine.
///
///     log    ::= header frame*
///     header ::= magic version pageSize sequence salt1 salt2 sum1 sum2
///     frame  ::= page databaseSize salt1 salt2 sum1 sum2 octet{pageSize}
///
/// All of them are words of 32 bits in network byte order; databaseSize is 0 but in the last frame
/// of a transaction, and the sums go on from frame to frame. The header reaches the disk before the
/// first frame, and a transaction before the next one begins: so a header with frames behind it is
/// whole, and only the last transaction may be torn. This needs a log that is only written to where
/// it ends, and synchronous=FULL.
std::string findingInLog(const std::string& path);

}  // namespace talvik
