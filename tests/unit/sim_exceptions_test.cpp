/// The test programs themselves.

#include <filesystem>
#include <gtest/gtest.h>

namespace {

// Where the linker leaves out the index of the unwind tables, what a test throws ends the whole
// program instead of failing the test.
TEST(TestProgram, CatchesWhatItsLibrariesThrow) {
    EXPECT_THROW(std::filesystem::create_directory("/none/such"),
                 std::filesystem::filesystem_error);
}

} // namespace
