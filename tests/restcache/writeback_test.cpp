#include "restcache/writeback.h"

#include "fakes.h"
#include "support/alloc.h"

#include <filesystem>
#include <gtest/gtest.h>

// A document of each kind of builder, those whose lock or log lines carry another name, and the bytes offered to every
// builder that fills a buffer; the names and keys of all documents stand in their golden texts.
static const struct EXPECTED_T {
    const char *apiName, *key, *lockName, *adapter, *builder, *builderMissing;
    size_t size;
} expected[] = {
    {"vlan_list", "switchConfigVlan", "vlan_list", "wb_vlan_list", "switchConfigVlanList", "switchConfigVlanList", 0},
    {"swcfg_ports_status", "swcfg_ports_status", "swcfg_ports_status", "wb_swcfg_ports_status", "getPortStatusList",
     "getPortStatusListFast", 0},
    {"sw_portmirroring", "devicePortMirroring", "sw_portmirroring", "wb_sw_portmirroring", "getPortMirroring",
     "getPortMirroring", 0},
    {"profile/list_ex", "profileList", "profile_list_ex", "wb_profile_list_ex", "profileListExGet", "profileListExGet",
     0},
    {"neighbor_ex", "", "neighbor_ex", "wb_neighbor_ex", "neighborListExChunkedPush", "neighborListExChunkedPush", 0},
    {"fiberOptics", "fiberOptics", "fiberOptics", "wb_fiber_optics", "fiberOpticsGet", "fiberOpticsGet", 0},
    {"radius_config", "radiusConfig", "radius_config", "wb_radius_config", "getRadiusServerJson", "getRadiusServerJson",
     8192},
    {"special_interface_route", "switchSpecialInterface", "special_interface_route", "wb_special_interface_route",
     "getSpecialInfInfo", "getSpecialInfInfo", 1024},
    {"device_time", "deviceTime", "device_time", "wb_device_time", "getDeviceTime", "getDeviceTime", 1024},
    {"logging", "loggingCfg", "logging", "wb_logging", "getLogConfigJson", "getLogConfigJson", 4096},
    {"profile", "profile", "profile", "wb_profile", "ProfileTemplateGet", "ProfileTemplateGet", 30720},
    {"imageInfo", "imageInfo", "imageInfo", "wb_imageInfo", "getImageInfo", "getImageInfo", 4096},
};

static CLIENT_HANDLE_T handle;
static const std::string resp = R"("resp":{"respCode":0,"respMsg":"Success","status":"success"}})";

struct Writeback : testing::Test {
    TEST_ROOT_T root;
    void SetUp() override
    {
        std::vector<const char *> names;
        fake = FAKE_T();
        for (const EXPECTED_T &row : expected)
            names.push_back(row.apiName);
        fakesRegister(names);
        ASSERT_EQ(restapi_db_operation(REST_DB_CREATE, nullptr, nullptr), 0);
    }
    static std::string failed(const char *adapter, const char *builder, int result)
    {
        return std::string("(ERROR) ") + adapter + ": " + adapter + ": " + builder +
               " failed result=" + std::to_string(result) + "\n";
    }
};

TEST_F(Writeback, EveryDocumentIsBuiltUnderItsLockAndStoredUnderItsKey)
{
    for (const EXPECTED_T &row : expected) {
        std::string key = row.key, name = row.apiName;
        fake = FAKE_T();
        fake.lockName = row.lockName;
        LISTENER_T listener;
        ASSERT_EQ(rest_db_writeback(&handle, row.apiName), 0) << name;
        EXPECT_EQ(fake.built, std::vector<std::string>{name});
        EXPECT_TRUE(fake.lockHeld) << name;
        EXPECT_TRUE(listener.signalled()) << name;
        EXPECT_EQ(fake.bufferSize, row.size) << name;
        EXPECT_TRUE(fake.bufferClean || row.size == 0) << name;
        std::string payload = name == "sw_portmirroring" ? R"({"session":1})" : "[1]";
        std::string stored = key.empty() ? "" : "{\"" + key + "\":" + payload + "," + resp;
        EXPECT_EQ(key.empty() ? cacheRead(name) : compact(cacheRead(name)), stored);
        EXPECT_STREQ(documentCurrent(), "");
    }
    std::string list = changeList();
    LISTENER_T listener;
    EXPECT_EQ(rest_db_writeback(&handle, "vlan_list"), 0); // signalled also without a change
    EXPECT_TRUE(listener.signalled());
    EXPECT_EQ(changeList(), list);
    EXPECT_EQ(logText(), "");
}

TEST_F(Writeback, FailuresKeepTheOldRecordAndNameTheBuilder)
{
    LISTENER_T listener;
    for (const EXPECTED_T &row : expected) {
        fake.result = 10003;
        logClear();
        EXPECT_EQ(rest_db_writeback(&handle, row.apiName), 10003);
        EXPECT_EQ(logText(), failed(row.adapter, row.builder, 10003));
        builderTableSet(nullptr, 0);
        logClear();
        EXPECT_EQ(rest_db_writeback(&handle, row.apiName), -1);
        EXPECT_EQ(logText(), std::string("(ERROR) ") + row.adapter + ": " + row.adapter + ": " + row.builderMissing +
                                 " not linked\n");
        SetUp();
        EXPECT_EQ(cacheRead(row.apiName), "");
    }
    EXPECT_EQ(changeList(), "");
    EXPECT_FALSE(listener.signalled());
}

TEST_F(Writeback, RefusesUnknownNamesAndAMissingLock)
{
    EXPECT_EQ(rest_db_writeback(&handle, "Vlan_list"), -1);
    EXPECT_EQ(rest_db_writeback(nullptr, "vlan_list"), -1);
    EXPECT_EQ(rest_db_writeback(&handle, nullptr), -1);
    const std::string null = "(ERROR) rest_db_writeback: rest_db_writeback: NULL handle or api_name\n";
    EXPECT_EQ(logText(), "(ERROR) rest_db_writeback: rest_db_writeback: unknown api_name 'Vlan_list'\n" + null + null);
    std::filesystem::remove_all(PathGet(PATH_LOCK_DIR));
    fileWrite(PathGet(PATH_LOCK_DIR), "");
    EXPECT_EQ(rest_db_writeback(&handle, "vlan_list"), -1);
    EXPECT_TRUE(fake.built.empty());
}

TEST_F(Writeback, SuccessWithoutAPayload)
{
    fake.payload = false;
    EXPECT_EQ(rest_db_writeback(&handle, "vlan_list"), 0);
    EXPECT_EQ(logText(), failed("wb_vlan_list", "switchConfigVlanList", 0));
    logClear();
    EXPECT_EQ(rest_db_writeback(&handle, "profile/list_ex"), 0);
    EXPECT_EQ(compact(cacheRead("profile/list_ex")), "{" + resp);
    EXPECT_EQ(logText(), "");
    EXPECT_EQ(changeList(), "profile/list_ex\n");
}

TEST_F(Writeback, OpticsWithoutAnyModuleAreASuccess)
{
    fake.result = 10015;
    EXPECT_EQ(rest_db_writeback(&handle, "fiberOptics"), 0);
    EXPECT_EQ(compact(cacheRead("fiberOptics")), R"({"fiberOptics":[1],)" + resp);
    fake.payload = false;
    EXPECT_EQ(rest_db_writeback(&handle, "fiberOptics"), 0);
    EXPECT_EQ(logText(), failed("wb_fiber_optics", "fiberOpticsGet", 0));
    EXPECT_EQ(rest_db_writeback(&handle, "vlan_list"), 10015);
}

TEST_F(Writeback, WritesOnlyAnEnvelopeThatWasBuilt)
{
    fake.text = "[1";
    EXPECT_EQ(rest_db_writeback(&handle, "vlan_list"), 0);
    EXPECT_EQ(logText(), "(ERROR) responseJsonRreallocStr: [MEM] Failed to parse data JSON\n");
    fake.text = "[\"" + std::string(1000, 't') + "\"]"; // fits the builder's buffer, its envelope does not
    EXPECT_EQ(rest_db_writeback(&handle, "device_time"), 0);
    EXPECT_EQ(changeList(), "");
    EXPECT_EQ(rest_db_writeback(&handle, "special_interface_route"), 0);
    EXPECT_EQ(changeList(), "special_interface_route\n");
}

// Own allocations fail one at a time; the adapter's first one is its buffer.
TEST_F(Writeback, BuffersThatCannotBeAllocated)
{
    auto run = [](const char *name, unsigned source) {
        logClear();
        allocFailAt(0, source);
        int result = rest_db_writeback(&handle, name);
        allocFailStop();
        return std::to_string(result) + " " + logText();
    };
    EXPECT_EQ(run("logging", ALLOC_OWN), "-1 (ERROR) wb_logging: wb_logging: alloc failed\n");
    EXPECT_EQ(run("sw_portmirroring", ALLOC_CJSON),
              "-1 (ERROR) wb_sw_portmirroring: wb_sw_portmirroring: cJSON_CreateObject failed\n");
    EXPECT_TRUE(fake.built.empty());
}
