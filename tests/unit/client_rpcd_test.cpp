/// What rpcd's clients ask for as a command line, and what they may not ask for.

#include "client/rpcd.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

/// A call, and what became of it.
struct rpcd_called {
    ctl_exit status = CTL_DONE;
    std::string words = {}; ///< each in brackets
    std::string said = {};

    rpcd_called(const std::string &method, const std::string &arguments) {
        ctl_rpcd_line line;
        testing::internal::CaptureStderr();
        status = ctl_rpcd_call(method.c_str(), arguments.data(), arguments.size(), &line);
        said = testing::internal::GetCapturedStderr();
        for (int i = 0; i < line.count; ++i)
            words += std::string("[") + line.words[i] + "]";
        EXPECT_EQ(line.words[line.count], nullptr);
    }
};

struct rpcd_case {
    const char *method;
    const char *arguments;
    const char *outcome; ///< the words behind the common ones, or what is wrong
};

TEST(ClientRpcd, MakesAMethodACommandLine) {
    const rpcd_case cases[] = {
        {"status", "{}", "[--][status]"},
        {"people", "{}", "[--][people]"},
        {"people", " {\n}", "[--][people]"},
        {"people", R"({"ubus_rpc_session":"0123456789abcdef"})", "[--][people]"},
        {"usage", "{}", "[--][usage]"},
        {"usage", R"({"person":"mia"})", "[--][usage][mia]"},
        {"usage", R"({"person":-7,"ubus_rpc_session":{}})", "[--][usage][-7]"},
        {"history", R"({"person":3})", "[--history][--][usage][3]"},
        {"history", R"({"person":3,"weeks":false})", "[--history][--][usage][3]"},
        {"history", R"({"weeks":true,"person":3})", "[--history][--weeks][--][usage][3]"},
        {"extend", R"({"person":"Zoë","minutes":30})", "[--][extend][add][Zoë][30]"},
        {"extend", R"({"minutes":"1h 30m","person":"3"})", "[--][extend][add][3][1h 30m]"},
        {"apply", "{}", "[--][apply]"},
        {"apply", R"({"repair":true,"dry_run":true,"prune":true})",
         "[--dry-run][--prune][--repair][--][apply]"},
        {"apply", R"({"prune":false})", "[--][apply]"},
    };
    for (const rpcd_case &one : cases) {
        const rpcd_called call(one.method, one.arguments);
        EXPECT_EQ(call.status, CTL_DONE) << one.arguments;
        EXPECT_EQ(call.words, std::string("[utm_appctl][--json][--timeout][25]") + one.outcome);
        EXPECT_EQ(call.said, "");
    }
}

TEST(ClientRpcd, TakesNothingForAnOptionOrForShellText) {
    for (const char *name : {"--help", "-s/tmp/elsewhere", "--", "-", "$(reboot)", "`reboot`",
                             "3; reboot", "'", "a b", "*", "../../etc/passwd", "%n"}) {
        json_object *arguments = json_object_new_object();
        json_object_object_add(arguments, "person", json_object_new_string(name));
        json_object_object_add(arguments, "minutes", json_object_new_string(name));
        const rpcd_called call("extend", json_object_to_json_string(arguments));
        EXPECT_EQ(call.words, std::string("[utm_appctl][--json][--timeout][25][--][extend][add][") +
                                  name + "][" + name + "]");
        json_object_put(arguments);
    }
}

TEST(ClientRpcd, RefusesWhatIsNoCall) {
    const char no_object[] = "the arguments are no JSON object of texts and numbers";
    const rpcd_case cases[] = {
        {"", "{}", "\"\" is no method"},
        {"export", "{}", "\"export\" is no method"},
        {"Status", "{}", "\"Status\" is no method"},
        {"status", "", no_object},
        {"status", "[]", no_object},
        {"status", "null", no_object},
        {"status", "{", no_object},
        {"status", "{}{}", no_object},
        {"status", "{} x", no_object},
        {"usage", "{\"person\":\"\xff\"}", no_object},
        {"usage", R"({"person":{"name":{}}})", no_object},
        {"status", R"({"person":3})", R"("person" is no argument of "status")"},
        {"apply", R"({"household":"/etc/shadow"})", R"("household" is no argument of "apply")"},
        {"apply", R"({"dry-run":true})", R"("dry-run" is no argument of "apply")"},
        {"usage", R"({"person":3,"--json":1})", R"("--json" is no argument of "usage")"},
        {"history", "{}", "\"person\" is missing"},
        {"extend", R"({"minutes":30})", "\"person\" is missing"},
        {"extend", R"({"person":3})", "\"minutes\" is missing"},
        {"usage", R"({"person":null})", "\"person\" is no name or number of a person"},
        {"usage", R"({"person":true})", "\"person\" is no name or number of a person"},
        {"usage", R"({"person":1.5})", "\"person\" is no name or number of a person"},
        {"usage", R"({"person":[]})", "\"person\" is no name or number of a person"},
        {"usage", R"({"person":""})", "\"person\" is no name or number of a person"},
        {"usage", R"({"person":"mia\u0000x"})", "\"person\" is no name or number of a person"},
        {"extend", R"({"person":3,"minutes":{}})",
         R"("minutes" is no number of minutes, nor "1h30m")"},
        {"extend", R"({"person":3,"minutes":0.5})",
         R"("minutes" is no number of minutes, nor "1h30m")"},
        {"apply", R"({"prune":1})", "\"prune\" is neither true nor false"},
        {"apply", R"({"repair":"true"})", "\"repair\" is neither true nor false"},
        {"history", R"({"person":3,"weeks":null})", "\"weeks\" is neither true nor false"},
    };
    for (const rpcd_case &one : cases) {
        const rpcd_called call(one.method, one.arguments);
        EXPECT_EQ(call.status, CTL_USAGE) << one.method << " " << one.arguments;
        EXPECT_EQ(call.words, "") << one.arguments;
        EXPECT_EQ(call.said, std::string("utm_appctl: ") + one.outcome + "\n") << one.arguments;
    }
}

} // namespace
