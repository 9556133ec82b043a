// The library's string types: standard strings whose memory comes from the library
// allocator.
#pragma once

#include <nox/allocator/StdAllocator.h>

#include <sstream>
#include <string>

namespace nox::utils {

using String = std::basic_string<char, std::char_traits<char>, nox::allocator::StdAllocator<char>>;
using StringStream = std::basic_stringstream<char, std::char_traits<char>, nox::allocator::StdAllocator<char>>;
using OStringStream = std::basic_ostringstream<char, std::char_traits<char>, nox::allocator::StdAllocator<char>>;

}  // namespace nox::utils
