// Relay characteristics on the impedance plane: the polygon's corners worked by hand, the
// circle, the diagram's range, the setup checks and number texts, and the ".tzb" file.

#include "cfgfixture.h"
#include "rxboundfile.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

long double tanDeg(long double deg)
{
    return std::tan(deg * 3.14159265358979323846L / 180.0L);
}

} // namespace

TEST(RxBoundGeometry, PolygonCornersAndBox)
{
    // Sita 60, 90 and 120 degrees: the top right corner right of, at and left of Rset.
    for (const float sita : {60.0f, 90.0f, 120.0f}) {
        RxBoundPoly p;
        p.fRset = 10, p.fXset = 20, p.fTgBeta = 0.25f, p.fAlfa = 30, p.fSita = sita;
        RxComputePolyGeometry(p);
        const long double tA = tanDeg(30), tS = tanDeg(sita);
        const long double a = tA * 20 / (1 - tA * 0.25L), b = 20 + a * 0.25L;
        const long double d = (20 - 0.25L * 10) / (tS + 0.25L);
        EXPECT_NEAR(p.ptLeft[0], double(-a), 1e-5);
        EXPECT_NEAR(p.ptLeft[1], double(b), 1e-5);
        EXPECT_NEAR(p.ptTop[0], double(10 + d), 1e-5);
        EXPECT_NEAR(p.ptTop[1], double(d * tS), 1e-4);
        EXPECT_NEAR(p.ptRight[1], double(-tA * 10), 1e-5);
        EXPECT_EQ(p.fLeft, p.ptLeft[0]);
        EXPECT_EQ(p.fBottom, p.ptRight[1]);
        EXPECT_EQ(p.fTop, p.ptLeft[1]);
        EXPECT_EQ(p.fRight, p.ptTop[0]);
        if (sita == 90.0f)
            EXPECT_NEAR(p.ptTop[0], 10.0, 1e-5);
        else
            EXPECT_EQ(p.ptTop[0] > 10.0f, sita < 90.0f);
        EXPECT_TRUE(RxInsidePoly(p, 5, 5));
        EXPECT_TRUE(RxInsidePoly(p, 10, 0)); // on the border
        EXPECT_FALSE(RxInsidePoly(p, 5, 30));
        EXPECT_FALSE(RxInsidePoly(p, -1, -1));
    }
    // No slope and no angle below R: a plain rectangle top from (0, X) to the right side.
    RxBoundPoly flat;
    flat.fAlfa = 0, flat.fTgBeta = 0, flat.fSita = 45;
    RxComputePolyGeometry(flat);
    EXPECT_EQ(flat.ptLeft[0], 0.0f);
    EXPECT_EQ(flat.ptLeft[1], 20.0f);
    EXPECT_NEAR(flat.ptTop[0], 40.0, 1e-5);
    EXPECT_NEAR(flat.ptTop[1], 20.0, 1e-5);
    RxPlanePoint outline[6];
    RxPolyOutline(flat, outline);
    EXPECT_EQ(outline[3].r, 20.0);
    EXPECT_EQ(outline[3].x, 0.0);
    EXPECT_EQ(outline[5].r, 0.0);
}

TEST(RxBoundGeometry, CircleAndRange)
{
    RxBoundSet s;
    EXPECT_EQ(s.poly.fRight, 0.0f); // derived fields wait for the dialog's OK
    s.circle.fZsetR = 3, s.circle.fZsetX = 4, s.circle.fAlfa = 1.0f;
    RxComputeBoundGeometry(s);
    EXPECT_EQ(s.circle.fCenterR, 0.0f);
    EXPECT_EQ(s.circle.fCenterX, 0.0f);
    EXPECT_EQ(s.circle.fRadius, 5.0f);
    EXPECT_EQ(s.circle.fLeft, -5.0f);
    EXPECT_TRUE(RxInsideCircle(s.circle, -3, 4));
    s.circle.fAlfa = 0.0f; // through the origin
    RxComputeCircleGeometry(s.circle);
    EXPECT_EQ(s.circle.fCenterR, 1.5f);
    EXPECT_EQ(s.circle.fRadius, 2.5f);

    // A range and a rectangle wholly on the positive side: the origin still shows.
    s.fRmin = 10, s.fXmin = 10, s.fRmax = 30, s.fXmax = 30;
    s.rect.fRmin = 5, s.rect.fXmin = 2, s.rect.fRmax = 40, s.rect.fXmax = 20;
    s.line.fZsetR = 35, s.line.fZsetX = 60;
    s.nBounds = RxBoundSet::BoundRect | RxBoundSet::BoundLine;
    float l, b, r, t;
    RxComputeRange(s, l, b, r, t);
    EXPECT_EQ(l, 0.0f);
    EXPECT_EQ(b, 0.0f);
    EXPECT_EQ(r, float(40 * 1.1));
    EXPECT_EQ(t, float(60 * 1.1));
    s.nBounds = RxBoundSet::BoundCircle | RxBoundSet::BoundPoly;
    RxComputeRange(s, l, b, r, t);
    EXPECT_EQ(l, float(s.poly.fLeft * 1.1));
    EXPECT_EQ(r, float(30 * 1.1));
    EXPECT_EQ(t, float(30 * 1.1));
    EXPECT_EQ(b, float(s.poly.fBottom * 1.1));
}

TEST(RxBoundSetup, ChecksAndNumbers)
{
    RxBoundPoly poly;
    QString error;
    const auto polyError = [&](QString r, QString x, QString t, QString a, QString s) {
        const QString edits[5] = {r, x, t, a, s};
        return RxStorePolyPage(edits, poly, error) ? QString() : error;
    };
    EXPECT_EQ(polyError("0.9", "5", "0", "0", "1"), "[Rset] Can NOT Less Than 1.0!");
    EXPECT_EQ(polyError("5", "abc", "0", "0", "1"), "[Xset] Can NOT Less Than 1.0!");
    EXPECT_EQ(polyError("5", "5", "0.51", "0", "1"), "[tgBeta(0~0.5)] Setting Error!");
    EXPECT_EQ(polyError("5", "5", "0.5", "45.1", "1"), "[(Ang)Alfa(0~45(Deg))] Setting Error!");
    EXPECT_EQ(polyError("5", "5", "0.5", "45", "-1"), "[(Ang)Sita(0~135(Deg))] Setting Error!");
    EXPECT_EQ(polyError("5", "5", "0", "45", "0"),
              "[tgBeta(0~0.5)] and [(Ang)Sita(0~135(Deg))] Can NOT Set to Zero simultaneity!");
    EXPECT_EQ(poly.fRset, 20.0f); // refused pages leave the record
    EXPECT_EQ(polyError("1", "1", "0.5", "45", "135"), QString());
    EXPECT_EQ(poly.fSita, 135.0f);

    RxBoundLine line;
    const QString lineEdits[3] = {"2", "2", "-80.5"};
    EXPECT_FALSE(RxStoreLinePage(lineEdits, line, error));
    EXPECT_EQ(error, "[Beta(-80~+80(Deg))] Setting Error!");
    RxBoundCircle circle;
    const QString circleEdits[3] = {"2", "2", "-0.6"};
    EXPECT_FALSE(RxStoreCirclePage(circleEdits, circle, error));
    EXPECT_EQ(error, "[Alfa(-0.5~1.0)] Setting Error");
    RxBoundRect rect;
    const QString rectEdits[4] = {"0.9", "x", "3", "2"}; // "x" reads 0 on this page
    EXPECT_FALSE(RxStoreRectPage(rectEdits, rect, error));
    EXPECT_EQ(error, "[Rset1 - Rset2] Can NOT Less Than 1.0!");
    const QString rectOk[4] = {"1", "x", "3", "2"};
    EXPECT_TRUE(RxStoreRectPage(rectOk, rect, error));
    EXPECT_EQ(rect.fRmin, 0.0f);
    RxBoundSet set;
    const QString range[4] = {"10", "0", "10", "9.5"};
    EXPECT_FALSE(RxStoreRange(range, set, error));
    EXPECT_EQ(error, "[Xmax - Xmin] Can NOT Less Than 1.0!");

    set.circle.fAlfa = 1.5f; // as a file may bring it
    EXPECT_EQ(RxBoundSetProblems(set), QStringList{"[Alfa(-0.5~1.0)] Setting Error"});

    EXPECT_EQ(RxBoundNumberText(0.0), "0.000000000");
    EXPECT_EQ(RxBoundNumberText(12345.67), "12345.7");
    EXPECT_EQ(RxBoundNumberText(-1234.5), "-1234.50");
    EXPECT_EQ(RxBoundNumberText(100.5), "100.500");
    EXPECT_EQ(RxBoundNumberText(0.00001), "0.0000");
}

using RxBoundFile = RecordingTest;

TEST_F(RxBoundFile, RoundTripAndHandWritten)
{
    RxBoundSet s;
    s.nBounds = RxBoundSet::BoundPoly | RxBoundSet::BoundRect;
    s.fRmax = 12.5f;
    s.poly.nColor = 0x80102030u;
    s.rect.fXmin = -0.25f;
    const QString path = QString::fromStdString(dir.path("zones.tzb"));
    QString message;
    ASSERT_TRUE(saveRxBounds(s, path, message));
    const std::string text = dir.read("zones.tzb");
    EXPECT_EQ(text.substr(0, text.find("[poly]")),
              "//+++++++++++++++++++++++++++++++++++\n"
              "// TRWK.VELDRIX\u963b\u6297\u5206\u6790\u8fb9\u754c\u53c2\u6570\u6587\u4ef6\n"
              "//+++++++++++++++++++++++++++++++++++\n\n"
              "[common]\nZmax=12.5000,50.0000\nZmin=-50.0000,-50.0000\nBounds=Poly,Rect,\n\n");
    EXPECT_NE(text.find("[poly]\nRset=20.0000\nXset=20.0000\ntgBeta=0.1250\nAlfa=15.0000\nSita=60.0000\n"
                        "Color=16,32,48\n\n[line]\nZset=5.0000,20.0000\nBeta=15.0000\nColor=0,255,255\n\n"
                        "[circle]\nZset=20.0000,20.0000\nAlfa=0.5000\nColor=0,128,0\n\n"
                        "[rect]\nZmax=20.0000,20.0000\nZmin=-5.0000,-0.2500\nColor=0,0,128\n\n"),
              std::string::npos);

    RxBoundSet back;
    back.nBounds = 0xF;
    ASSERT_TRUE(loadRxBounds(back, path, message));
    EXPECT_EQ(back.nBounds, s.nBounds);
    EXPECT_EQ(back.fRmax, 12.5f);
    EXPECT_EQ(back.rect.fXmin, -0.25f);
    EXPECT_EQ(back.poly.nColor, 0xFF102030u);

    // Sections in any order and case; the names in "Bounds" only with their capitals; a pair
    // of one number and a short colour are passed over; red spills above its byte.
    dir.write("hand.tzb", {"[RECT]", "zmax=1", "color=1,2", "[Common]", "bounds=poly,line,Circle", "[line]",
                           "COLOR=300,257,-1", "Beta=-7.5 // a comment"});
    ASSERT_TRUE(loadRxBounds(back, QString::fromStdString(dir.path("hand.tzb")), message));
    EXPECT_EQ(back.nBounds, RxBoundSet::BoundCircle);
    EXPECT_EQ(back.rect.fRmax, 20.0f);
    EXPECT_EQ(back.rect.nColor, 0xFF000080u);
    EXPECT_EQ(back.line.nColor, 0xFF2C01FFu);
    EXPECT_EQ(back.line.fBeta, -7.5f);
    dir.write("empty.tzb", {"[common]", "Bounds="});
    ASSERT_TRUE(loadRxBounds(back, QString::fromStdString(dir.path("empty.tzb")), message));
    EXPECT_EQ(back.nBounds, 0u);

    const QString missing = QString::fromStdString(dir.path("none/zones.tzb"));
    EXPECT_FALSE(loadRxBounds(back, missing, message));
    EXPECT_EQ(message, "Open [" + missing + "] Error When Loading it!");
    EXPECT_FALSE(saveRxBounds(s, missing, message));
    EXPECT_EQ(message, "Create [" + missing + "] Error When Save File!");
}
