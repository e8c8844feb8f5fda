#include "collectors/feature/sw_ptp_cfg.h"
#include "stores/sql.h"
#include "support/build.h"
#include "switch/fixture.h"

using Ptp = SWITCH_TEST;

// VLANs 20, 0 and 30 want a boundary clock, in this order; then fifteen more from 100 on, of which two are too many.
TEST_F(Ptp, ModeFollowsTheClocks)
{
    struct {
        std::vector<VS_PTP_DOMAIN_T> domains;
        int result, domain; // of the look-up without a VLAN
        const char *document;
    } cases[] = {
        {{{5, 10}, {6, 0}, {7, 113}}, -26, -1, R"({"ptpMode":1,"ptpTcAdmin":1,"ptpBcAdmin":0})"},
        {{{3, 40}, {5, 30}, {7, 20}, {8, 20}}, 0, 7, R"({"ptpMode":2,"ptpTcAdmin":1,"ptpBcAdmin":1})"},
        {{{0, 112}}, 0, 0, R"({"ptpMode":2,"ptpTcAdmin":1,"ptpBcAdmin":1})"},
        {{{127, 0}}, -26, -1, R"({"ptpMode":2,"ptpTcAdmin":1,"ptpBcAdmin":1})"},
    };
    fileWrite(PathGet(PATH_TEMPLATE_DIR) + std::string("Audio_Clock"), R"({"PTP":true,"PTP-BC":true})");
    fileWrite(PathGet(PATH_TEMPLATE_DIR) + std::string("Audio"), R"({"PTP":true,"PTP-BC":false})");
    vlanInfoTableMake();
    sqlRun(PATH_VLANINFO_DB, "insert into vlanInfo values(20,1,'a','Audio Clock',''),(10,1,'b','Audio',''),"
                             "(0,1,'c','Audio Clock',''),(30,1,'d','Audio Clock',''),(5,1,'e','Missing','')");
    for (int id = 100; id < 115; id++)
        sqlRun(PATH_VLANINFO_DB, "insert into vlanInfo values(" + std::to_string(id) + ",1,'n','Audio Clock','')");
    vsState().system.ptpTransparent = true;
    for (const auto &one : cases) {
        uint32_t domain = ~0U;
        vsState().ptpDomains = one.domains;
        vsCallsReset();
        EXPECT_EQ(ptpBoundaryClockDomainGet(&handle, 0, &domain), one.result);
        EXPECT_EQ(static_cast<int>(domain), one.domain);
        EXPECT_EQ(vsCallCount("rpcclt_openapiLinuxptpIsDomainExists"), 128u);
        EXPECT_EQ(compact(buildText(switchPtpModeGet).text), one.document);
    }
    uint32_t domain;
    vsState().ptpDomains = {{5, 20}};
    EXPECT_EQ(ptpBoundaryClockDomainGet(&handle, 31, &domain), -26);
    EXPECT_EQ(ptpBoundaryClockDomainGet(&handle, 20, &domain), 0);
    EXPECT_EQ(domain, 5u);
}
