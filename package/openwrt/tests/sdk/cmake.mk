# The SDK's file of this name runs CMake; the test has a build of its own.
