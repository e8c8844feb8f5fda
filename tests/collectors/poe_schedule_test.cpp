#include "collectors/feature/schedule_list.h"
#include "support/build.h"

// Ports 101 (1/0/5) and 105 (1/0/6) on "night", 201 (2/0/5) on "nightly"; "night" is weekly with three entries.
struct PoeSchedule : BUILDER_TEST {
    void SetUp() override
    {
        for (const auto &[ifNum, unit, number] : {std::tuple(101U, 1U, 5U), {105U, 1U, 6U}, {201U, 2U, 5U}}) {
            VS_POE_T &poe = portAdd(ifNum, unit, 0, number).poe;
            poe.valid = true;
            poe.schedule = ifNum == 201 ? "nightly" : "night";
        }
        state.timeRanges.resize(2);
        VS_TIME_RANGE_T &night = state.timeRanges[0], &daily = state.timeRanges[1];
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
        daily.name = "nightly";
        daily.recurrence = 1;
        period.startDays = 0x82;
        daily.periods.push_back(period);
    }
};

static const std::string nightRow = R"({"name":"night","status":2,"startTime":"20:05","endTime":"08:30",)"
                                    R"("startDate":"2026-03-01","endDate":"2026-12-31","recurrence":2,)"
                                    R"("recurrenceDays":[2,5],"portNum":[101,105]})";
static const std::string nightlyRow = R"({"name":"nightly","status":1,"startTime":"20:05","endTime":"09:30",)"
                                      R"("startDate":"2026-03-01","endDate":"2026-12-31","recurrence":1,)"
                                      R"("recurrenceDays":[6,7],"portNum":[201]})";

TEST_F(PoeSchedule, FailedReadLeavesItsDefault)
{
    const std::string name = "(ERROR) getPoeSchedule: ", clean = "[" + nightRow + "," + nightlyRow + "]";
    const std::string end = name + "Bad return code trying to get StartDateAndTime of a schedule. (result = -1)\n";
    const std::vector<std::string> noEnd = {"08:30", "", "2026-12-31", "", "[2,5]", "[]"};
    const char endGet[] = "openapiTimeRangePeriodicEntryEndDateAndTimeGet";
    expectFailures([] { return documentOf(getPoeScheduleAllJson); }, clean,
                   {
                       {{"openapiTimeRangeNameFirstGet", "", 0, VS_FAIL, -26}, {clean, "[]"}, ""},
                       {{"openapiTimeRangeNameFirstGet"},
                        {clean, "[]"},
                        "(ERROR) getPoeScheduleAllJson: openapiTimeRangeNameFirstGet get failed. result = -1\n"},
                       {{"openapiTimeRangeNumEntriesGet", "night"},
                        noEnd,
                        name + "Bad return code trying to get number of entries configured for the given time range. "
                               "(result = -1)\n"},
                       {{endGet, "night"}, noEnd, end + end + end},
                       {{endGet, "night", 3}, {"08:30", "07:30", "[2,5]", "[2]"}, end}, // the end is the one before it
                       {{"openapiTimeRangePeriodicEntryStartDateAndTimeGet", "night"},
                        {"20:05", "", "2026-03-01", "", R"("recurrence":2)", R"("recurrence":1)", "[2,5]", "[]"},
                        name + "TimeRangePeriodicEntry (night) get failed. result = -1\n"},
                       {{"openapiTimeRangeStatusGet", "night"}, {R"("status":2)", R"("status":0)"}},
                       // the walk of ports ends at one without a place, and goes on behind one without a schedule
                       {{"openapiHashIntfUnitSlotPortGet", "105"}, {"[101,105]", "[101]", "[201]", "[]"}},
                       {{"openapiPoePsePortTimerScheduleNameGet", "5"}, {"[101,105]", "[105]", "[201]", "[]"}},
                   });
}

TEST_F(PoeSchedule, DayMaskNamesMondayToSunday)
{
    const std::pair<uint32_t, const char *> cases[] = {{0x00, "[]"},  {0x01, "[]"},    {0x02, "[7]"},
                                                       {0x04, "[1]"}, {0x82, "[6,7]"}, {0xFF, "[1,2,3,4,5,6,7]"}};
    for (const auto &[mask, days] : cases) {
        state.timeRanges[1].periods[0].startDays = mask;
        EXPECT_TRUE(
            has(documentOf(getPoeScheduleAllJson), std::string(R"("recurrenceDays":)") + days + R"(,"portNum":[201])"));
    }
    state.timeRanges[0].periods[2].end = {65535, 255, 255, 255, 255};
    EXPECT_TRUE(
        has(documentOf(getPoeScheduleAllJson), R"("endTime":"255:2","startDate":"2026-03-01","endDate":"65535-255-")"));
}
