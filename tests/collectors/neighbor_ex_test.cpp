#include "collectors/port/neighbor_ex_rows.h"

#include <gtest/gtest.h>
#include <string>

TEST(NeighborRow, OfMoreThan2559BytesIsLeftOut)
{
    NEIGHBOR_IF_T interface = {};
    char text[NEIGHBOR_ROW_SIZE];
    for (NEIGHBOR_ROW_FORM form : {NEIGHBOR_ROW_LLDP, NEIGHBOR_ROW_FDB}) {
        size_t empty = neighborRowPrint(form, {&interface, 1, 1, "", "", "", ""}, text);
        std::string fits(2559 - empty, 'x');
        EXPECT_EQ(neighborRowPrint(form, {&interface, 1, 1, "", fits.c_str(), "", ""}, text), 2559u);
        EXPECT_EQ(neighborRowPrint(form, {&interface, 1, 1, "", (fits + "x").c_str(), "", ""}, text), 0u);
        EXPECT_EQ(neighborRowPrint(form, {&interface, 1, 1, "", std::string(9000, '"').c_str(), "", ""}, text), 0u);
    }
}
