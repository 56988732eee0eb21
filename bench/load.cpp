/// Puts load on the control socket of a running daemon and prints how long its answers take.
///
///     utm_load [clients [requests [type [id]]]]
///
/// Each of so many clients (4) makes so many requests (10000) of a command type (35, a profile's
/// usage) with an id (1), one connection after the other, as the front end does.

#include "sim/harness/client.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <vector>

namespace {

using clock_type = std::chrono::steady_clock;

struct client_t {
    std::vector<double> microseconds;
    long bytes = 0;
    long failures = 0;
};

void run(client_t *client, long requests, const utm_app_config_cmd &request) {
    const std::string bytes = sim_bytes(request);
    std::string answer;
    for (long n = 0; n < requests; ++n) {
        const clock_type::time_point start = clock_type::now();
        const bool answered = sim_converse(UTM_APP_CONFIG_SOCKET_PATH, bytes, &answer);
        const std::chrono::duration<double, std::micro> took = clock_type::now() - start;
        if (!answered || answer.empty()) {
            ++client->failures;
            continue;
        }
        client->microseconds.push_back(took.count());
        client->bytes += static_cast<long>(answer.size());
    }
}

long argument(int argc, char **argv, int index, long otherwise) {
    return index < argc ? strtol(argv[index], nullptr, 10) : otherwise;
}

client_t sum_of(const std::vector<client_t> &clients) {
    client_t sum;
    for (const client_t &client : clients) {
        sum.microseconds.insert(sum.microseconds.end(), client.microseconds.begin(),
                                client.microseconds.end());
        sum.bytes += client.bytes;
        sum.failures += client.failures;
    }
    std::sort(sum.microseconds.begin(), sum.microseconds.end());
    return sum;
}

double percentile(const client_t &sum, double part) {
    const size_t last = sum.microseconds.size() - 1;
    return sum.microseconds[static_cast<size_t>(static_cast<double>(last) * part)];
}

} // namespace

int main(int argc, char **argv) {
    const long count = argument(argc, argv, 1, 4);
    const long requests = argument(argc, argv, 2, 10'000);
    utm_app_config_cmd request = {};
    request.type = static_cast<uint8_t>(argument(argc, argv, 3, UTM_APP_CONFIG_GET_PROFILE_USAGE));
    request.arg0 = static_cast<int32_t>(argument(argc, argv, 4, 1));
    if (count < 1 || count > 1000 || requests < 1) {
        fprintf(stderr, "usage: utm_load [clients [requests [type [id]]]]\n");
        return 2;
    }
    std::vector<client_t> clients(static_cast<size_t>(count));
    std::vector<std::thread> threads;
    const clock_type::time_point start = clock_type::now();
    for (client_t &client : clients)
        threads.emplace_back(run, &client, requests, std::cref(request));
    for (std::thread &thread : threads)
        thread.join();
    const std::chrono::duration<double> took = clock_type::now() - start;
    const client_t sum = sum_of(clients);
    printf("%zu answered, %ld not, %ld bytes in %.2f s\n", sum.microseconds.size(), sum.failures,
           sum.bytes, took.count());
    if (sum.microseconds.empty())
        return 1;
    printf("%.0f a second; microseconds: median %.1f, 99 %% %.1f, longest %.1f\n",
           static_cast<double>(sum.microseconds.size()) / took.count(), percentile(sum, 0.5),
           percentile(sum, 0.99), sum.microseconds.back());
    return sum.failures == 0 ? 0 : 1;
}
