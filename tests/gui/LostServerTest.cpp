#include "ControlFixture.h"
#include "TestServer.h"

#include "gui/XConnection.h"

#include <algorithm>
#include <cstdlib>

TEST(CApp, WithoutADisplayOpenIsFalse) {
    setenv("DISPLAY", ":987", 1);
    CApp app;
    testing::internal::CaptureStderr();
    EXPECT_FALSE(app.open());
    const std::string line = testing::internal::GetCapturedStderr();
    EXPECT_NE(line.find(":987"), std::string::npos);
    EXPECT_EQ(std::count(line.begin(), line.end(), '\n'), 1);
}

/// The server dies in the middle of painting: the loop ends, and what is left can be used and
/// deleted.
TEST(CApp, ALostServerEndsTheLoop) {
    TestServer server;
    setenv("DISPLAY", server.display.c_str(), 1);
    CApp app;
    ASSERT_TRUE(app.open());
    {
        CWin win(&app, nullptr, "lost", 10, 10, 200, 100, winCaption);
        auto* probe = new ProbeCtrl(&win, "probe", 0, 0, 50, 50);
        win.addControl(probe);
        probe->onTick = [&] {
            if (probe->log.size() == 3) server.kill();
            for (int i = 0; i < 2000; i++) app.drawNow(&win, probe);
        };
        app.addTimer(probe, 10, true);
        app.run(&win);
        EXPECT_TRUE(xConnection().lost);
        probe->redraw();
        win.maximize();
        win.setPos(5, 5);
        EXPECT_EQ(app.winAtPos(20, 20), nullptr);
        win.hide();
        win.show(true);
    }
}
