// Symbol visibility of nox_utils: everything is hidden unless marked NOX_UTILS_API.
#pragma once

#if defined(NOX_UTILS_STATIC)
#define NOX_UTILS_API
#else
#define NOX_UTILS_API __attribute__((visibility("default")))
#endif
