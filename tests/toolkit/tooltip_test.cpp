// XToolTip: the delay before a tip shows, its duration and fade, and that
// a tip that timed out waits for the cursor to leave and come back. The
// poll is driven with made-up cursor positions and times.
#include "toolkit/tooltip.h"

#include <gtest/gtest.h>

#include "tests/support/toolkittest.h"
#include "toolkit/application.h"
#include "toolkit/controls.h"

namespace {

const clRect kArea = clRect::Sized(100, 100, 50, 20);
const clPoint kInside{110, 110};
const clPoint kOutside{10, 10};

}  // namespace

TEST(XToolTip, ShowsAfterTheDelayAndGoesWhenTheCursorLeaves) {
    XToolTip tip;
    tip.Activate(u"Converts with the chosen encoder", nullptr, kArea);
    tip.Poll(kInside, 1000);
    tip.Poll(kInside, 1999);
    EXPECT_FALSE(tip.IsShown()) << "a delay of 0 is 1000 ms";
    tip.Poll(kInside, 2000);
    EXPECT_TRUE(tip.IsShown());
    tip.Poll(kOutside, 2050);
    EXPECT_FALSE(tip.IsShown());
    tip.Deactivate();
}

TEST(XToolTip, ADurationOfMinusOneStaysUntilTheCursorLeaves) {
    XToolTip tip;
    tip.delay = 100;
    tip.duration = -1;
    tip.Activate(u"Stays", nullptr, kArea);
    tip.Poll(kInside, 0);
    tip.Poll(kInside, 100);
    ASSERT_TRUE(tip.IsShown());
    tip.Poll(kInside, 500000);
    EXPECT_TRUE(tip.IsShown());
    EXPECT_EQ(tip.currentAlpha, 255);
    tip.Poll(kOutside, 500050);
    EXPECT_FALSE(tip.IsShown());
}

TEST(XToolTip, FadesOverTheLastThirdAtMostTwoAndAHalfSeconds) {
    EXPECT_EQ(XToolTip::FadeStart(3000), 2000);
    EXPECT_EQ(XToolTip::FadeStart(15000), 12500);
    EXPECT_EQ(XToolTip::FadeStart(10000), 7500) << "the default duration";
    XToolTip tip;
    tip.delay = 100;
    tip.duration = 3000;
    tip.Activate(u"Fades", nullptr, kArea);
    tip.Poll(kInside, 10000);
    tip.Poll(kInside, 10100);
    ASSERT_TRUE(tip.IsShown());
    tip.Poll(kInside, 12100);
    EXPECT_EQ(tip.currentAlpha, 255) << "not past 2000 ms of its showing";
    tip.Poll(kInside, 12600);
    EXPECT_EQ(tip.currentAlpha, 255 - 500 * 255 / 1000) << "half way through the fade";
    tip.Poll(kInside, 13101);
    EXPECT_FALSE(tip.IsShown()) << "past its 3000 ms";
}

TEST(XToolTip, ATimedOutTipComesBackOnlyAfterTheCursorLeftAndReturned) {
    XToolTip tip;
    tip.delay = 100;
    tip.duration = 1000;
    tip.Activate(u"Once", nullptr, kArea);
    tip.Poll(kInside, 0);
    tip.Poll(kInside, 100);
    tip.Poll(kInside, 1101);
    ASSERT_FALSE(tip.IsShown());
    tip.Poll(kInside, 5000);
    tip.Poll(kInside, 9000);
    EXPECT_FALSE(tip.IsShown()) << "resting on: no second showing";
    tip.Poll(kOutside, 9050);
    tip.Poll(kInside, 9100);
    tip.Poll(kInside, 9200);
    EXPECT_TRUE(tip.IsShown());
}

TEST(XToolTip, AHideRequestEndsTheShowingAtTheNextPoll) {
    XToolTip tip;
    tip.delay = 100;
    tip.Activate(u"Hidden", nullptr, kArea);
    tip.Poll(kInside, 0);
    tip.Poll(kInside, 100);
    ASSERT_TRUE(tip.IsShown());
    tip.RequestHide();
    tip.Poll(kOutside, 150);
    EXPECT_FALSE(tip.IsShown());
}

// Deliberate: no tooltip thread owns windows (Qt allows none off the GUI
// thread). One 50 ms timer on the GUI thread polls every active tip, and
// the poll stops with the last one.
TEST(XToolTip, OneTimerOnTheGuiThreadPollsTheTips) {
    clPoint at = CursorPosition();
    XToolTip tip;
    tip.delay = 100;
    tip.duration = -1;
    tip.Activate(u"Polled", nullptr, clRect::Sized(at.x - 5, at.y - 5, 10, 10));
    ToolkitProcessFor(600);
    EXPECT_TRUE(tip.IsShown());
    tip.Deactivate();
    EXPECT_FALSE(tip.IsShown());
}
