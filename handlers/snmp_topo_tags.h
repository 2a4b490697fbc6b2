#pragma once

/// Cell tags of the topology row; each is the column's number in the MIB.
namespace talvik::topo_tag {

constexpr unsigned short kNodeCode = 1;
constexpr unsigned short kNodeType = 2;
constexpr unsigned short kNodeIndex = 3;
constexpr unsigned short kAddress = 4;
constexpr unsigned short kNodeName = 5;
constexpr unsigned short kReserved1 = 6;
constexpr unsigned short kReserved2 = 7;
constexpr unsigned short kStatus = 8;

}  // namespace talvik::topo_tag
