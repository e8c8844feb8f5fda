#include "switch/session.h"

// Opens the one client session of the process: crash-log registration, client registration, the wait until the
// platform's server answers, and a report of the platform's versions for the log.

#include "runtime/account.h"
#include "runtime/clock.h"
#include "runtime/log.h"
#include "runtime/result.h"

#include <cstdio>
#include <proc_libs.h>
#include <unistd.h>

namespace {
constexpr size_t CLIENT_NAME_SIZE = 100;
constexpr int CONNECT_ATTEMPTS = 7;
constexpr uint32_t CONNECT_PAUSE = 3; // seconds

int serverWait(CLIENT_HANDLE_T *clientHandle, const char *caller);
void versionsLog(CLIENT_HANDLE_T *clientHandle, const char *caller);
} // namespace

int initHandler(const char *baseName, CLIENT_HANDLE_T *clientHandle)
{
    (void)l7proc_crashlog_register(); // a session without crash log is as good
    char clientName[CLIENT_NAME_SIZE];
    snprintf(clientName, sizeof clientName, "%s_%d", baseName, getpid());
    int result = openapiClientRegister(clientName, clientHandle);
    if (result != OPENCLT_OK) {
        LOG_ERROR("\nFailed to initialize RPC to OpEN. Exiting (result = %d)\n", result);
        return RESULT_ERROR;
    }
    LOG_DEBUG("Register RPC to OpEN success. (client name = %s)\n", clientName);
    if (serverWait(clientHandle, __func__) != RESULT_OK)
        return RESULT_ERROR;
    versionsLog(clientHandle, __func__);
    return RESULT_OK;
}

namespace {
int serverWait(CLIENT_HANDLE_T *clientHandle, const char *caller)
{
    for (int attempt = 1;; attempt++) {
        int result = rpcclt_openapiConnectivityCheck(clientHandle);
        accountSession(result == OPENCLT_OK, attempt);
        if (result == OPENCLT_OK)
            return RESULT_OK;
        if (attempt == CONNECT_ATTEMPTS)
            return RESULT_ERROR;
        LOG_WARN_AS(caller, "RPC call can fail until server starts. Keep trying (result = %d)\n", result);
        ClockSleep(CONNECT_PAUSE);
    }
}

void versionsLog(CLIENT_HANDLE_T *clientHandle, const char *caller)
{
    char bytes[100 + 1] = {}; // terminated whatever the platform writes
    openclt_buffer_t text = {100, bytes};
    if (rpcclt_openapiNetworkOSVersionGet(clientHandle, &text) == OPENCLT_OK)
        LOG_DEBUG_AS(caller, "ICOS Version = %s\n", bytes);
    else
        LOG_ERROR_AS(caller, "Network OS Version retrieve error\n");

    openclt_api_version_t api = {};
    if (rpcclt_openapiApiVersionGet(clientHandle, &api) == OPENCLT_OK)
        LOG_DEBUG_AS(caller, "Open API Version = %d.%d.%d.%d\n", api.release, api.version, api.maintenance, api.build);
    else
        LOG_ERROR_AS(caller, "Open API Version retrieve error\n");
}
} // namespace
