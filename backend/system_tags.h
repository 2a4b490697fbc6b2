#pragma once

/// Cell tags of the answers to the commands about the system as a whole.
namespace talvik::backend::system_tag {

constexpr unsigned short kWwn = 1;  ///< text: 16 hexadecimal digits

}  // namespace talvik::backend::system_tag
