// The X-Y boundary file: what the writer puts on disk, what the reader takes back from files
// written by hand, the list rows, and the messages of a failed save or load.

#include "cfgfixture.h"
#include "xybounds.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using XYBoundFile = RecordingTest;

TEST_F(XYBoundFile, RoundTrip)
{
    const std::vector<XYBound> list = {
        {.kind = XYBound::KindLine, .colour = 0x80FF8000u, .a = 1.5, .b = -2.25},
        {.kind = XYBound::KindCircle, .colour = 0xFF0000FFu, .xc = 3.0, .yc = -4.0, .r = 0.1234567},
        {.kind = XYBound::KindPlumbLine, .colour = 0xFF102030u, .c = 12.0}};
    const QString path = QString::fromStdString(dir.path("zones.txb"));
    QString message = "old";
    ASSERT_TRUE(SaveXYBounds(path, list, message));
    EXPECT_TRUE(message.isEmpty());
    EXPECT_EQ(dir.read("zones.txb"),
              "//+++++++++++++++++++++++++++++++++++++++++++++++\n"
              "// TRWK.VELDRIX(X-Y)\u81ea\u5b9a\u4e49\u5e73\u9762\u5206\u6790\u8fb9\u754c"
              "\u53c2\u6570\u6587\u4ef6\n"
              "//+++++++++++++++++++++++++++++++++++++++++++++++\n\n"
              "[common]\n"
              "LineAB=255,128,0,1.500000,-2.250000//R,G,B,a,b\n"
              "Circle=0,0,255,3.000000,-4.000000,0.123457//R,G,B,xc,yc,r\n"
              "LineC=16,32,48,12.000000//R,G,B,c\n");

    std::vector<XYBound> back(5); // the reader starts a new list
    ASSERT_TRUE(LoadXYBounds(path, back, message));
    ASSERT_EQ(back.size(), 3u);
    EXPECT_EQ(back[0].colour, 0xFFFF8000u); // the file keeps no transparency
    EXPECT_EQ(back[1].r, 0.123457);
    EXPECT_EQ(back[2].colour, 0xFF102030u);
    EXPECT_EQ(XYBoundKindText(back[0]), "Line");
    EXPECT_EQ(XYBoundSettingsText(back[0]), "Y=AX+B: A=1.500000, B=-2.250000");
    EXPECT_EQ(XYBoundSettingsText(back[1]), "Xo=3.000000, Yo=-4.000000, R=0.123457");
    EXPECT_EQ(XYBoundSettingsText(back[2]), "X=C: C=12.000000");
}

TEST_F(XYBoundFile, WrittenByHandAndMessages)
{
    // Keys in any case, numbers ended by a comment, a section of another name, a line short of
    // numbers, and a second "common" section that goes on adding.
    dir.write("hand.txb",
              {"[COMMON]", "lineab = 1 , 2 , 3 , 0.5 , 7e1//R,G,B,a,b", "CIRCLE=4,5,6,1,2",
               "linec=300,0,-1,-0.25//c", "[other]", "LineC=1,1,1,7", "[Common]",
               "Circle=7,8,9,1,2,3//xc,yc,r"},
              "\r\n");
    std::vector<XYBound> list;
    QString message;
    ASSERT_TRUE(LoadXYBounds(QString::fromStdString(dir.path("hand.txb")), list, message));
    ASSERT_EQ(list.size(), 3u);
    EXPECT_EQ(list[0].kind, XYBound::KindLine);
    EXPECT_EQ(list[0].colour, 0xFF010203u);
    EXPECT_EQ(list[0].b, 70.0);
    EXPECT_EQ(list[1].kind, XYBound::KindPlumbLine);
    EXPECT_EQ(list[1].colour, 0xFF2C00FFu); // each colour part keeps its low byte
    EXPECT_EQ(list[1].c, -0.25);
    EXPECT_EQ(list[2].kind, XYBound::KindCircle);
    EXPECT_EQ(list[2].r, 3.0);

    // A failed save or load says so and leaves the list.
    const QString missing = QString::fromStdString(dir.path("none/zones.txb"));
    list.resize(1);
    EXPECT_FALSE(SaveXYBounds(missing, list, message));
    EXPECT_EQ(message, "Create [" + missing + "] Error When Save File!");
    EXPECT_FALSE(LoadXYBounds(missing, list, message));
    EXPECT_EQ(message, "Open [" + missing + "] Error When Loading it!");
    EXPECT_EQ(list.size(), 1u);
}
