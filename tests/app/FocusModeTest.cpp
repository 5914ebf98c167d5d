#include "support/TempDir.h"
#include "system/FocusMode.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

namespace recorder {
namespace {

// The real settings tool, writing to a key file of the test's own instead
// of the person's desktop.
class FocusModeTest : public ::testing::Test {
protected:
    void SetUp() override {
        keep("XDG_CONFIG_HOME");
        keep("GSETTINGS_BACKEND");
        setenv("XDG_CONFIG_HOME", dir.path().c_str(), 1);
        setenv("GSETTINGS_BACKEND", "keyfile", 1);
        if (std::system("gsettings get org.gnome.desktop.notifications show-banners >/dev/null 2>&1") != 0)
            GTEST_SKIP() << "no GNOME settings schemas here";
    }
    void TearDown() override {
        for (const auto& [name, value] : saved_)
            value ? setenv(name.c_str(), value->c_str(), 1) : unsetenv(name.c_str());
    }

    static std::string get(const std::string& schemaAndKey) {
        std::string command = "gsettings get " + schemaAndKey;
        FILE* pipe = popen(command.c_str(), "r");
        char buffer[64] = {};
        std::string out = fgets(buffer, sizeof buffer, pipe) ? buffer : "";
        pclose(pipe);
        while (!out.empty() && out.back() == '\n') out.pop_back();
        return out;
    }
    static void set(const std::string& schemaAndKey, const std::string& value) {
        ASSERT_EQ(std::system(("gsettings set " + schemaAndKey + " " + value).c_str()), 0);
    }

    static constexpr const char* banners = "org.gnome.desktop.notifications show-banners";
    static constexpr const char* icons = "org.gnome.desktop.background show-desktop-icons";

    test::TempDir dir;

private:
    void keep(const std::string& name) {
        const char* value = std::getenv(name.c_str());
        saved_.emplace_back(name, value ? std::optional<std::string>(value) : std::nullopt);
    }
    std::vector<std::pair<std::string, std::optional<std::string>>> saved_;
};

TEST_F(FocusModeTest, QuietsTheDesktopAndPutsBackWhatItChanged) {
    set(icons, "true");
    ASSERT_EQ(get(banners), "true");
    FocusMode focus;
    focus.enable(true, true);
    EXPECT_TRUE(focus.dndOn());
    EXPECT_TRUE(focus.hidDesktop());
    EXPECT_EQ(get(banners), "false");
    EXPECT_EQ(get(icons), "false");

    focus.restore();
    EXPECT_EQ(get(banners), "true");
    EXPECT_EQ(get(icons), "true");

    // The second restore does nothing, even to a setting the person changed since.
    set(banners, "false");
    focus.restore();
    EXPECT_EQ(get(banners), "false");
}

TEST_F(FocusModeTest, RestoresOnlyWhatWasAskedFor) {
    set(icons, "true");
    FocusMode focus;
    focus.enable(false, true);
    EXPECT_EQ(get(banners), "true");
    set(banners, "false"); // the person's own choice, meanwhile
    focus.restore();
    EXPECT_EQ(get(icons), "true");
    EXPECT_EQ(get(banners), "false");
}

TEST_F(FocusModeTest, SettingsAlreadyQuietAreLeftAsTheyAre) {
    set(banners, "false");
    FocusMode focus;
    focus.enable(true, true); // the icons are off by default
    set(banners, "true");
    set(icons, "true");
    focus.restore();
    EXPECT_EQ(get(banners), "true");
    EXPECT_EQ(get(icons), "true");
}

TEST(FocusMode, WithoutTheSettingsToolNothingHappensAndNothingThrows) {
    FocusMode focus("/nonexistent/gsettings");
    EXPECT_NO_THROW(focus.enable(true, true));
    EXPECT_NO_THROW(focus.restore());
    EXPECT_FALSE(focus.dndOn());
    EXPECT_FALSE(focus.hidDesktop());
}

TEST(FocusMode, ADesktopWithoutTheSchemasIsOnlyAsked) {
    // A settings tool that knows no schema, noting how it was called.
    test::TempDir dir;
    auto log = dir / "calls";
    auto tool = dir / "gsettings";
    std::ofstream(tool) << "#!/bin/sh\necho \"$*\" >> '" << log.string() << "'\necho \"No such schema\" >&2\nexit 1\n";
    std::filesystem::permissions(tool, std::filesystem::perms::owner_all);

    FocusMode focus(tool.string());
    focus.enable(true, true);
    focus.restore();
    focus.restore();
    std::stringstream calls;
    calls << std::ifstream(log).rdbuf();
    EXPECT_EQ(calls.str(),
              "get org.gnome.desktop.background show-desktop-icons\n"
              "get org.gnome.shell.extensions.ding show-home\n"
              "get org.gnome.shell.extensions.ding show-trash\n"
              "get org.gnome.shell.extensions.ding show-volumes\n"
              "get org.gnome.desktop.notifications show-banners\n");
}

} // namespace
} // namespace recorder
