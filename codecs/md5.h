// MD5 (RFC 1321), which XMP in JPEG files names its extended part by. It protects nothing.
#pragma once

#include <string>
#include <string_view>

namespace skyvault {

/// As 32 hexadecimal digits in upper case.
std::string Md5Text(std::string_view data);

}  // namespace skyvault
