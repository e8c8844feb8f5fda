// session.h - the one client session with the switch platform.
#pragma once

#include <openclt.h>

// Passed first to every builder, wrapper and platform call; filled once by initHandler, never closed.
using CLIENT_HANDLE_T = openclt_handle_t;

// Register as "<baseName>_<pid>" (cut at 99 characters) and wait until the platform's server answers: up to 7 attempts,
// 3 seconds apart. Logs the platform's versions. 0 when connected, -1 when refused or never answered.
// Platform: l7proc_crashlog_register, openapiClientRegister, rpcclt_openapiConnectivityCheck, version queries.
[[nodiscard]] int initHandler(const char *baseName, CLIENT_HANDLE_T *clientHandle);
