#pragma once
/// Usage files for the client's report, in a folder and a time zone of their own.

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <string>

class client_report_fixture : public testing::Test {
protected:
    void SetUp() override {
        const char *zone = getenv("TZ");
        had_zone_ = zone != nullptr;
        old_zone_ = had_zone_ ? zone : "";
        set_zone("UTC0");
        folder_ = (std::filesystem::temp_directory_path() / "client_report.XXXXXX").string();
        ASSERT_NE(mkdtemp(folder_.data()), nullptr);
    }

    void TearDown() override {
        std::filesystem::remove_all(folder_);
        if (had_zone_)
            set_zone(old_zone_.c_str());
        else
            unsetenv("TZ");
        tzset();
    }

    /// @param zone  in POSIX form, which needs no zone files
    static void set_zone(const char *zone) {
        setenv("TZ", zone, 1);
        tzset();
    }

    std::string path(const std::string &name) const { return folder_ + "/" + name; }

    std::string write(const std::string &text) const {
        std::ofstream(path("usage.json"), std::ios::binary) << text;
        return path("usage.json");
    }

    static std::string read(const std::string &file) {
        std::ostringstream text;
        text << std::ifstream(file, std::ios::binary).rdbuf();
        return text.str();
    }

    static std::string golden(const std::string &name) {
        return std::string(UTM_SOURCE_DIR "/tests/unit/golden/") + name;
    }

private:
    std::string folder_;
    std::string old_zone_;
    bool had_zone_ = false;
};
