#include "collectors/feature/vlan_list.h"
#include "collectors/port/swcfg_ports_settings.h"
#include "collectors/port/swcfg_ports_status.h"
#include "stores/sql.h"
#include "support/build.h"

using ProfileLock = BUILDER_TEST;

// A read that finds the database locked gives the default and is made again for the next row; a build waits only once.
TEST_F(ProfileLock, LockedDatabaseIsAskedAgainWithoutWaiting)
{
    ASSERT_EQ(vsLoadText(R"({"vlans": {"10": {"name": "Dante"}}, "lags": {"1": {}},
                             "units": {"1": {"model": "TK620-R01", "portCount": 3}}, "ports": {"1/0/2-3": {"pvid": 10}}})"),
              "");
    vlanInfoTableMake();
    sqlRun(PATH_VLANINFO_DB, "insert into vlanInfo values(10, 7, 'Pixels', 'Video', '#000000')");
    for (BUILDER_TEXT_T builder : {getPortStatusListFast, getPortsSettings}) {
        SQL_LOCKED_T lock(PATH_VLANINFO_DB);
        auto release = [](void *context, const char *name, const char *key, bool) {
            if (std::string(name) + key == "openapiIfMaxFrameSizeGet2") // asked for once the row has its profile
                static_cast<OWNED_DB *>(context)->reset();
        };
        vsObserverSet(release, &lock.holder);
        const std::string rows = documentOf(builder);
        vsObserverSet(nullptr, nullptr);
        EXPECT_EQ(lock.waited, 3000000);
        EXPECT_LT(rows.find(R"("profileName":"Default")", rows.find("1/0/2")), rows.find("1/0/3")) << rows;
        EXPECT_TRUE(has(rows.substr(rows.find("1/0/3")), R"("profileName":"Pixels")")) << rows;
    }
    SQL_LOCKED_T lock(PATH_VLANINFO_DB);
    EXPECT_TRUE(has(documentOf(switchConfigVlanList), R"("vlanId":10,"name":"Dante")"));
    EXPECT_EQ(lock.waited, 3000000); // once, not for each VLAN
}
