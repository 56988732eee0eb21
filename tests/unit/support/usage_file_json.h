#pragma once
/// json-c's building functions that can fail, as when memory runs out.
///
/// json-c is a shared library with an allocator of its own, so the failures are put behind the
/// functions that the daemon calls: creating an object, array, number or string returns null,
/// adding to an object or array returns -1 and leaves the value to the caller.

namespace usage_file {

/// Makes the `nth` of these calls from now fail (1 is the next one); 0 counts without failing.
void fail_json(int nth);

/// @return calls since the last `fail_json`
int json_calls();

} // namespace usage_file
