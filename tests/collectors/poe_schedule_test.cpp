#include "collectors/feature/poe_schedule.h"
#include "support/build.h"

// Ports 101 (1/0/5) and 105 (1/0/6) on "night", 201 (2/0/5) on "nightly"; "night" is weekly with three entries.
struct PoeSchedule : BUILDER_TEST {
    void SetUp() override
    {
        portAdd(101, 1, 5, "night");
        portAdd(105, 1, 6, "night");
        portAdd(201, 2, 5, "nightly");
        VS_TIME_RANGE_T night;
        night.name = "night";
        night.status = 2;
        VS_PERIOD_T period;
        period.start = {2026, 3, 1, 20, 5};
        period.startDays = 0x24;
        period.end = {2026, 12, 31, 6, 30};
        for (uint32_t day : {2, 2, 5}) {
            period.endDay = day;
            night.periods.push_back(period);
            period.end.hour++;
        }
        state.timeRanges.push_back(night);
        VS_TIME_RANGE_T daily;
        daily.name = "nightly";
        daily.recurrence = 1;
        period.startDays = 0x82;
        daily.periods.push_back(period);
        state.timeRanges.push_back(daily);
    }
    static void portAdd(uint32_t ifNum, uint32_t unit, uint32_t number, const char *schedule)
    {
        VS_PORT_T port;
        port.ifNum = ifNum;
        port.unit = unit;
        port.port = number;
        port.poe.valid = true;
        port.poe.schedule = schedule;
        vsState().ports.push_back(port);
    }
    static void fail(const char *call, const char *key = "", uint32_t nth = 0, int result = -1)
    {
        VS_FAULT_T fault;
        fault.name = call;
        fault.key = key;
        fault.nth = nth;
        fault.result = result;
        vsFaultAdd(fault);
    }
};

static const std::string nightRow = R"({"name":"night","status":2,"startTime":"20:05","endTime":"08:30",)"
                                    R"("startDate":"2026-03-01","endDate":"2026-12-31","recurrence":2,)"
                                    R"("recurrenceDays":[2,5],"portNum":[101,105]})";
static const std::string nightlyRow = R"({"name":"nightly","status":1,"startTime":"20:05","endTime":"09:30",)"
                                      R"("startDate":"2026-03-01","endDate":"2026-12-31","recurrence":1,)"
                                      R"("recurrenceDays":[6,7],"portNum":[201]})";

TEST_F(PoeSchedule, ShowsEveryTimeRangeWithItsPorts)
{
    BUILT_T built = buildText(getPoeScheduleAllJson);
    EXPECT_EQ(built.result, 0);
    EXPECT_EQ(built.text, "[" + nightRow + "," + nightlyRow + "]");
    EXPECT_EQ(logText(), "");
}

TEST_F(PoeSchedule, EmptyWithoutAFirstName)
{
    const struct {
        int result;
        const char *log;
    } cases[] = {
        {-26, ""},
        {-1, "(ERROR) getPoeScheduleAllJson: openapiTimeRangeNameFirstGet get failed. result = -1\n"},
    };
    for (const auto &one : cases) {
        logClear();
        fail("openapiTimeRangeNameFirstGet", "", 0, one.result);
        BUILT_T built = buildText(getPoeScheduleAllJson);
        vsFaultsClear();
        EXPECT_EQ(built.result, 0);
        EXPECT_EQ(built.text, "[]");
        EXPECT_EQ(logText(), one.log);
    }
}

TEST_F(PoeSchedule, DayMaskNamesMondayToSunday)
{
    const struct {
        uint32_t mask;
        const char *days;
    } cases[] = {{0x00, "[]"}, {0x01, "[]"}, {0x02, "[7]"}, {0x04, "[1]"}, {0x82, "[6,7]"}, {0xFF, "[1,2,3,4,5,6,7]"}};
    for (const auto &one : cases) {
        vsState().timeRanges[1].periods[0].startDays = one.mask;
        EXPECT_NE(buildText(getPoeScheduleAllJson)
                      .text.find(std::string(R"("recurrenceDays":)") + one.days + R"(,"portNum":[201])"),
                  std::string::npos)
            << one.mask;
    }
}

TEST_F(PoeSchedule, FailedReadLeavesItsDefault)
{
    const std::string name = "(ERROR) getPoeSchedule: ";
    const std::string endLine = name + "Bad return code trying to get StartDateAndTime of a schedule. (result = -1)\n";
    const std::string noEnd =
        R"("startTime":"20:05","endTime":"","startDate":"2026-03-01","endDate":"","recurrence":2,)"
        R"("recurrenceDays":[],"portNum":[101,105]})";
    const struct {
        const char *call;
        uint32_t nth;
        std::string row; // after name and status
        std::string log;
    } cases[] = {
        {"openapiTimeRangeNumEntriesGet", 0, noEnd,
         name + "Bad return code trying to get number of entries configured for the given time range. (result = -1)\n"},
        {"openapiTimeRangePeriodicEntryEndDateAndTimeGet", 0, noEnd, endLine + endLine + endLine},
        // only the last: the end is the one before it
        {"openapiTimeRangePeriodicEntryEndDateAndTimeGet", 3,
         R"("startTime":"20:05","endTime":"07:30","startDate":"2026-03-01","endDate":"2026-12-31","recurrence":2,)"
         R"("recurrenceDays":[2],"portNum":[101,105]})",
         endLine},
        {"openapiTimeRangePeriodicEntryStartDateAndTimeGet", 0,
         R"("startTime":"","endTime":"08:30","startDate":"","endDate":"2026-12-31","recurrence":1,)"
         R"("recurrenceDays":[],"portNum":[101,105]})",
         name + "TimeRangePeriodicEntry (night) get failed. result = -1\n"},
    };
    for (const auto &one : cases) {
        logClear();
        fail(one.call, "night", one.nth);
        EXPECT_EQ(buildText(getPoeScheduleAllJson).text,
                  R"([{"name":"night","status":2,)" + one.row + "," + nightlyRow + "]")
            << one.call;
        vsFaultsClear();
        EXPECT_EQ(logText(), one.log) << one.call;
    }
    logLevelSet('7');
    logClear();
    fail("openapiTimeRangeStatusGet", "night");
    EXPECT_NE(buildText(getPoeScheduleAllJson).text.find(R"({"name":"night","status":0,)"), std::string::npos);
    EXPECT_NE(logText().find("(DEBUG) getPoeSchedule: Time Range status : night 0 \n"), std::string::npos) << logText();
}

TEST_F(PoeSchedule, PortsAreWalkedUntilOneHasNoPlace)
{
    fail("openapiHashIntfUnitSlotPortGet", "105");
    EXPECT_NE(buildText(getPoeScheduleAllJson).text.find(R"("portNum":[101]},)"), std::string::npos);
    vsFaultsClear();
    fail("openapiPoePsePortTimerScheduleNameGet", "5"); // one port's name: the walk goes on
    EXPECT_NE(buildText(getPoeScheduleAllJson).text.find(R"("portNum":[105]},)"), std::string::npos);
    vsFaultsClear();
    fail("openapiIfFirstGet");
    EXPECT_NE(buildText(getPoeScheduleAllJson).text.find(R"("portNum":[]},)"), std::string::npos);
}

TEST_F(PoeSchedule, OutOfRangeNumbersStayInTheirFields)
{
    VS_PERIOD_T &period = vsState().timeRanges[0].periods[2];
    period.end = {65535, 255, 255, 255, 255};
    EXPECT_NE(buildText(getPoeScheduleAllJson)
                  .text.find(R"("endTime":"255:2","startDate":"2026-03-01",)"
                             R"("endDate":"65535-255-")"),
              std::string::npos);
    const std::string longest(31, 'n');
    vsState().timeRanges[0].name = longest;
    vsState().ports[0].poe.schedule = longest;
    const std::string text = buildText(getPoeScheduleAllJson).text;
    EXPECT_NE(text.find("\"" + longest + "\""), std::string::npos);
    EXPECT_NE(text.find(R"("portNum":[101]})"), std::string::npos);
}
