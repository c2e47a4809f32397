// The window's place from one run to the next.
#include "app/place.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "shell/shell_test.h"

namespace {

TEST(Place, IsMovedOntoAScreen) {
    const std::vector<host::Rect> screens = {{0, 0, 1000, 800}, {1000, 200, 1500, 600}};
    const struct {
        int x, y, width, height, fit_x, fit_y;
    } rows[] = {
        {100, 100, 452, 300, 100, 100},  {-1, 50, 452, 300, 0, 50},      {900, 700, 452, 300, 548, 500},
        {1100, 0, 300, 300, 1100, 200},  {5000, 50, 452, 300, 548, 50},  {0, 0, 2000, 2000, 0, 0},
        {990, 100, 452, 300, 1000, 200}, {-32767, -32767, 10, 10, 0, 0},
    };
    for (const auto& row : rows) {
        const host::Rect at = {row.x, row.y, row.x + row.width, row.y + row.height};
        const host::Rect fit = app::FitPlace(at, screens);
        EXPECT_EQ(fit.left, row.fit_x) << row.x << " " << row.y;
        EXPECT_EQ(fit.top, row.fit_y) << row.x << " " << row.y;
        EXPECT_EQ(fit.right - fit.left, row.width);
    }
}

class PlaceTest : public test::ShellTest {
public:
    PlaceTest() { setenv("XDG_STATE_HOME", folder_.Path("state").c_str(), 1); }
    ~PlaceTest() override { unsetenv("XDG_STATE_HOME"); }
};

TEST_F(PlaceTest, IsKeptFromTheEndOfARun) {
    using Options = std::vector<std::string>;
    app::SavePlace();  // there was no window
    EXPECT_EQ(app::PlaceOptions(), Options());
    headless::At(100, headless::MoveWindow(300, 40));
    headless::At(200, headless::Key(test::kEscape));
    EXPECT_EQ(Run(), 0);
    app::SavePlace();
    EXPECT_EQ(app::PlaceOptions(), (Options{"-X300", "-Y40"}));
    EXPECT_EQ(test::ReadFile(app::PlaceFile()), "window 300 40 452 280\n");
    for (const char* bad :
         {"", "window 1 2 3", "window 1 2 3 4 5\n", "window 1 2 0 4\n", "window 99999 2 3 4\n",
          "window  1 2 3 4\n", "window 9999999999999999999 2 3 4\n"}) {
        folder_.Write("state/lumetra/place", bad);
        EXPECT_EQ(app::PlaceOptions(), Options()) << bad;
    }
    folder_.Write("state/lumetra/place", std::string(100'000, ' '));
    EXPECT_EQ(app::PlaceOptions(), Options());
    std::filesystem::remove(app::PlaceFile());
    ASSERT_EQ(mkfifo(app::PlaceFile().c_str(), 0600), 0);
    EXPECT_EQ(app::PlaceOptions(), Options());
    setenv("XDG_STATE_HOME", "relative", 1);
    setenv("HOME", "", 1);
    EXPECT_EQ(app::PlaceFile(), "");
    app::SavePlace();
}

}  // namespace
