#include "restcache/writeback.h"

// Rebuilding one document: a table of 30 rows and one adapter over it. A row says which lock to hold, how the builder
// gives its payload, and under which key the envelope carries it; what an adapter does differently is a flag of its
// row. The log lines carry the adapter's and the builder's names of the row.

#include "restcache/builder.h"
#include "restcache/envelope.h"
#include "restcache/store.h"
#include "runtime/document.h"
#include "runtime/json.h"
#include "runtime/log.h"
#include "runtime/owned.h"
#include "runtime/process_state.h"
#include "runtime/result.h"

#include <cstring>
#include <iterator>

enum WRITEBACK_FLAG : unsigned {
    WB_NO_PAYLOAD_OK = 1,   // a success without a payload stores an envelope of "resp" alone
    WB_EMPTY_OK = 2,        // builder result 10015 counts as success
    WB_OWN_BUFFER = 4,      // buffer on the stack
    WB_SHARED_BUFFER = 8,   // buffer is the shared scratch buffer
    WB_ALLOC_SILENT = 16,   // no line when the buffer cannot be allocated
    WB_FIXED_ENVELOPE = 32, // the envelope must fit 1024 bytes
};

struct WRITEBACK_ROW_T {
    const char *apiName;
    const char *lockName;   // as a file name: without '/'
    const char *payloadKey; // null for a builder that writes its own records
    const char *adapter;
    const char *builder;        // builder word of the "failed" line
    const char *builderMissing; // builder word of the "not linked" line
    BUILDER_KIND kind;
    size_t bufferSize; // bytes offered to a BUILDER_BUFFER
    unsigned flags;
};

// A row whose builder fills an allocated text, locked under its own name.
constexpr WRITEBACK_ROW_T textRow(const char *apiName, const char *payloadKey, const char *adapter, const char *builder,
                                  unsigned flags = 0)
{
    return {apiName, apiName, payloadKey, adapter, builder, builder, BUILDER_TEXT, 0, flags};
}
constexpr WRITEBACK_ROW_T bufferRow(const char *apiName, const char *payloadKey, const char *adapter,
                                    const char *builder, size_t size, unsigned flags = 0)
{
    return {apiName, apiName, payloadKey, adapter, builder, builder, BUILDER_BUFFER, size, flags};
}

constexpr size_t OWN_BUFFER_SIZE = 1024;

constexpr WRITEBACK_ROW_T restDbWritebackTable[] = {
    textRow("vlan_list", "switchConfigVlan", "wb_vlan_list", "switchConfigVlanList"),
    textRow("swcfg_port", "switchPortConfig", "wb_swcfg_port", "getPhyInfAllStatusFast"),
    {"swcfg_ports_status", "swcfg_ports_status", "swcfg_ports_status", "wb_swcfg_ports_status", "getPortStatusList",
     "getPortStatusListFast", BUILDER_TEXT, 0, 0},
    textRow("swcfg_ports_settings", "swcfg_ports_settings", "wb_swcfg_ports_settings", "getPortsSettings"),
    textRow("interfaces_status", "interfacesStatus", "wb_interfaces_status", "interfacesStatusBuild"),
    textRow("swcfg_poe", "poePortConfig", "wb_swcfg_poe", "getPortsPoeJson"),
    textRow("sw_lag_cfg", "switchConfigLagGroup", "wb_sw_lag_cfg", "getLagInfoList"),
    textRow("sw_lag_cfg_ex", "switchConfigLagGroup", "wb_sw_lag_cfg_ex", "getLagInfoListEx"),
    textRow("sw_auto_lag_cfg", "switchConfigAutoLag", "wb_sw_auto_lag_cfg", "getAutoLagCfg"),
    textRow("sw_manual_trunk_cfg", "switchConfigManualTrunk", "wb_sw_manual_trunk_cfg", "manualTrunkGet"),
    textRow("sw_auto_trunk_cfg", "switchConfigAutoTrunk", "wb_sw_auto_trunk_cfg", "switchTrunkModeGet"),
    bufferRow("radius_config", "radiusConfig", "wb_radius_config", "getRadiusServerJson", 8192,
              WB_SHARED_BUFFER | WB_ALLOC_SILENT),
    textRow("radius_port_config", "radius_port_config", "wb_radius_port_config", "getPortAuthConfigJson"),
    textRow("multicast_mode_ex", "multicastModeConfig", "wb_multicast_mode_ex", "getMulticastModeEx"),
    textRow("multicast_block_address", "blockAddressList", "wb_multicast_block_address", "getDenyList"),
    textRow("sw_ptp_cfg", "switchPtpCfg", "wb_sw_ptp_cfg", "switchPtpModeGet"),
    {"sw_portmirroring", "sw_portmirroring", "devicePortMirroring", "wb_sw_portmirroring", "getPortMirroring",
     "getPortMirroring", BUILDER_OBJECT, 0, 0},
    textRow("scheduleList", "poeSchedule", "wb_scheduleList", "getPoeScheduleAllJson"),
    textRow("system_info", "systemInfo", "wb_system_info", "systemInfoGet"),
    textRow("device_health", "deviceHealth", "wb_device_health", "deviceHealthGet"),
    bufferRow("special_interface_route", "switchSpecialInterface", "wb_special_interface_route", "getSpecialInfInfo",
              OWN_BUFFER_SIZE, WB_OWN_BUFFER),
    bufferRow("device_time", "deviceTime", "wb_device_time", "getDeviceTime", OWN_BUFFER_SIZE,
              WB_OWN_BUFFER | WB_FIXED_ENVELOPE),
    bufferRow("logging", "loggingCfg", "wb_logging", "getLogConfigJson", 4096, WB_SHARED_BUFFER),
    bufferRow("profile", "profile", "wb_profile", "ProfileTemplateGet", 30720),
    {"profile/list_ex", "profile_list_ex", "profileList", "wb_profile_list_ex", "profileListExGet", "profileListExGet",
     BUILDER_TEXT, 0, WB_NO_PAYLOAD_OK},
    {"neighbor_ex", "neighbor_ex", nullptr, "wb_neighbor_ex", "neighborListExChunkedPush", "neighborListExChunkedPush",
     BUILDER_WRITES, 0, 0},
    textRow("port_vendor_detect", "portVendorDetect", "wb_port_vendor_detect", "portVendorDetectBuild"),
    textRow("port_hardware_info", "portHardwareInfo", "wb_port_hardware_info", "portHardwareInfoBuild"),
    textRow("fiberOptics", "fiberOptics", "wb_fiber_optics", "fiberOpticsGet", WB_EMPTY_OK),
    bufferRow("imageInfo", "imageInfo", "wb_imageInfo", "getImageInfo", 4096),
};
static_assert(std::size(restDbWritebackTable) == 30, "every document that can be rebuilt by name");

// One run of an adapter: what is released when it ends, the lock last.
struct WRITEBACK_RUN_T {
    int lock = -1;
    OWNED_TEXT text; // payload that this run allocated
    char own[OWN_BUFFER_SIZE] = {};
    char *buffer = nullptr; // where a BUILDER_BUFFER writes
    OWNED_JSON object;      // what a BUILDER_OBJECT fills
    const char *payload = nullptr;

    WRITEBACK_RUN_T() = default;
    WRITEBACK_RUN_T(const WRITEBACK_RUN_T &) = delete;
    WRITEBACK_RUN_T &operator=(const WRITEBACK_RUN_T &) = delete;
    ~WRITEBACK_RUN_T()
    {
        rest_db_lock_release(lock);
    }
};

// Buffer of the adapters marked WB_SHARED_BUFFER. It keeps its largest size for the life of the process.
struct SCRATCH_BUFFER_T {
    size_t size;
    char *bytes;
};
static SCRATCH_BUFFER_T scratch;

static const WRITEBACK_ROW_T *rowFind(const char *apiName);
static int adapterRun(CLIENT_HANDLE_T *clientHandle, const WRITEBACK_ROW_T *row);
static bool outputPrepare(const WRITEBACK_ROW_T *row, WRITEBACK_RUN_T *run);
static bool bufferPrepare(const WRITEBACK_ROW_T *row, WRITEBACK_RUN_T *run);
static int builderRun(CLIENT_HANDLE_T *clientHandle, const WRITEBACK_ROW_T *row, const BUILDER_T *builder,
                      WRITEBACK_RUN_T *run);
static void payloadStore(const WRITEBACK_ROW_T *row, const char *payload);
static bool scratchGrow(size_t need);
static void scratchReset();

static PROCESS_STATE_T scratchState(scratchReset);

int rest_db_writeback(CLIENT_HANDLE_T *clientHandle, const char *apiName)
{
    if (clientHandle == nullptr || apiName == nullptr) {
        LOG_ERROR("rest_db_writeback: NULL handle or api_name\n");
        return RESULT_ERROR;
    }
    const WRITEBACK_ROW_T *row = rowFind(apiName);
    if (row == nullptr) {
        LOG_ERROR("rest_db_writeback: unknown api_name '%s'\n", apiName);
        return RESULT_ERROR;
    }
    int result = adapterRun(clientHandle, row);
    if (result == RESULT_OK)
        send_signal_to_ws();
    return result;
}

const char *writebackName(unsigned index)
{
    return index < std::size(restDbWritebackTable) ? restDbWritebackTable[index].apiName : nullptr;
}

static const WRITEBACK_ROW_T *rowFind(const char *apiName)
{
    for (const WRITEBACK_ROW_T &row : restDbWritebackTable) {
        if (strcmp(row.apiName, apiName) == 0)
            return &row;
    }
    return nullptr;
}

static int adapterRun(CLIENT_HANDLE_T *clientHandle, const WRITEBACK_ROW_T *row)
{
    const BUILDER_T *builder = builderFind(row->apiName, row->kind);
    if (builder == nullptr) {
        LOG_ERROR_AS(row->adapter, "%s: %s not linked\n", row->adapter, row->builderMissing);
        return RESULT_ERROR;
    }
    WRITEBACK_RUN_T run;
    int result = rest_db_lock_acquire(row->lockName, &run.lock);
    if (result != RESULT_OK)
        return result;
    if (!outputPrepare(row, &run))
        return RESULT_ERROR;

    jsonBuildBegin();
    documentSet(row->apiName);
    result = builderRun(clientHandle, row, builder, &run);
    documentSet(nullptr);

    if (result == RESULT_EMPTY && (row->flags & WB_EMPTY_OK) != 0)
        result = RESULT_OK;
    if (result == RESULT_OK && row->kind == BUILDER_WRITES)
        return RESULT_OK; // its records are written
    if (result == RESULT_OK && (run.payload != nullptr || (row->flags & WB_NO_PAYLOAD_OK) != 0))
        payloadStore(row, run.payload);
    else
        LOG_ERROR_AS(row->adapter, "%s: %s failed result=%d\n", row->adapter, row->builder, result);
    return result;
}

// Where the builder will put its payload; false when there is no memory for it (logged as the row wants it).
static bool outputPrepare(const WRITEBACK_ROW_T *row, WRITEBACK_RUN_T *run)
{
    if (row->kind == BUILDER_BUFFER && !bufferPrepare(row, run)) {
        if ((row->flags & WB_ALLOC_SILENT) == 0)
            LOG_ERROR_AS(row->adapter, "%s: alloc failed\n", row->adapter);
        return false;
    }
    if (row->kind == BUILDER_OBJECT) {
        run->object.reset(cJSON_CreateObject());
        if (run->object == nullptr) {
            LOG_ERROR_AS(row->adapter, "%s: cJSON_CreateObject failed\n", row->adapter);
            return false;
        }
    }
    return true;
}

static bool bufferPrepare(const WRITEBACK_ROW_T *row, WRITEBACK_RUN_T *run)
{
    if ((row->flags & WB_OWN_BUFFER) != 0) {
        run->buffer = run->own;
    } else if ((row->flags & WB_SHARED_BUFFER) != 0) {
        if (!scratchGrow(row->bufferSize))
            return false;
        memset(scratch.bytes, 0, row->bufferSize);
        run->buffer = scratch.bytes;
    } else {
        run->text.reset(static_cast<char *>(calloc(1, row->bufferSize)));
        run->buffer = run->text.get();
    }
    return run->buffer != nullptr;
}

static int builderRun(CLIENT_HANDLE_T *clientHandle, const WRITEBACK_ROW_T *row, const BUILDER_T *builder,
                      WRITEBACK_RUN_T *run)
{
    char *text = nullptr;
    int result = RESULT_ERROR;

    switch (row->kind) {
    case BUILDER_TEXT:
        result = builder->text(clientHandle, &text);
        run->text.reset(text);
        run->payload = text;
        break;
    case BUILDER_BUFFER:
        result = builder->buffer(clientHandle, run->buffer, row->bufferSize);
        run->payload = run->buffer;
        break;
    case BUILDER_OBJECT:
        result = builder->object(clientHandle, 1, run->object.get());
        if (result == RESULT_OK)
            run->text.reset(jsonPrint(run->object.get(), JSON_FORMATTED));
        run->payload = run->text.get();
        break;
    case BUILDER_WRITES:
        result = builder->writes(clientHandle);
        break;
    }
    return result;
}

// Only an envelope that was built is written. What the store did with it does not count: it logs its own failures, and
// the next run tries again.
static void payloadStore(const WRITEBACK_ROW_T *row, const char *payload)
{
    char fixed[OWN_BUFFER_SIZE] = {};
    char *envelope = nullptr;

    if ((row->flags & WB_FIXED_ENVELOPE) != 0) {
        if (responseJsonStr(RESULT_OK, row->payloadKey, payload, fixed, sizeof(fixed)) == RESULT_OK)
            (void)restapi_db_operation(REST_DB_WRITE, row->apiName, fixed);
        return;
    }
    int result = responseJsonRreallocStr(RESULT_OK, row->payloadKey, payload, &envelope);
    OWNED_TEXT owned(envelope);
    if (result == RESULT_OK)
        (void)restapi_db_operation(REST_DB_WRITE, row->apiName, envelope);
}

// Grow while the size does not exceed the need: 8192 bytes for a need of 4096, 16384 for one of 8192.
static bool scratchGrow(size_t need)
{
    if (scratch.size > need)
        return true;
    size_t size = scratch.size == 0 ? 1024 : scratch.size;
    while (size <= need)
        size *= 2;
    char *bytes = static_cast<char *>(realloc(scratch.bytes, size));
    if (bytes == nullptr)
        return false;
    scratch = {size, bytes};
    return true;
}

static void scratchReset()
{
    free(scratch.bytes);
    scratch = {0, nullptr};
}
