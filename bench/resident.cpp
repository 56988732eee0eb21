#include "bench/resident.h"

#include "bench/ratios.h"
#include "core/owners.h"
#include "persist/export.h"
#include "sim/harness/client.h"
#include "sim/harness/daemon_process.h"
#include "sim/harness/files.h"

#include <cstdio>
#include <sys/stat.h>

namespace {

constexpr char router_folder[] = "/tmp/resident_router";
constexpr char household_path[] = "/tmp/resident.json";
constexpr char export_path[] = "/tmp/resident_out.json";
constexpr double resident_limit_kib = 16 * 1024;
constexpr double export_limit_kib = 8 * 1024;

/// @param figure  such as "VmRSS"
double kib_of(pid_t pid, const std::string &figure) {
    for (const std::string &line :
         sim_split_lines(sim_read_file("/proc/" + std::to_string(pid) + "/status")))
        if (line.rfind(figure + ":", 0) == 0)
            return atof(line.c_str() + figure.size() + 1);
    return 0;
}

bool ask(const utm_app_config_cmd &command) {
    return sim_status(sim_ask(command)) == UTM_APP_CONFIG_STATUS_OK;
}

bool import_and_export() {
    return ask({.type = UTM_APP_CONFIG_SET_ACTIVATE, .arg0 = 1}) &&
           ask(sim_path_command(UTM_APP_CONFIG_IMPORT_STATISTICS, household_path)) &&
           ask(sim_path_command(UTM_APP_CONFIG_EXPORT_STATISTICS, export_path));
}

/// Lets the peak begin anew.
bool forget_peak(pid_t pid) {
    const std::string path = "/proc/" + std::to_string(pid) + "/clear_refs";
    const file_ptr file(fopen(path.c_str(), "we"));
    return file != nullptr && fputs("5", file.get()) >= 0 && fflush(file.get()) == 0;
}

/// @return by how much another export exceeds what is resident before it; negative when that failed
double export_peak_kib(pid_t pid) {
    const double before = kib_of(pid, "VmRSS");
    const bool is_measured =
        forget_peak(pid) && ask(sim_path_command(UTM_APP_CONFIG_EXPORT_STATISTICS, export_path));
    return is_measured ? kib_of(pid, "VmHWM") - before : -1;
}

} // namespace

bool resident_print(const household_size_t &size) {
    household_build(size);
    const bool is_made = utm_app_export_statistics(household_path, 1) == 0;
    household_clear();
    mkdir(router_folder, 0755);
    sim_daemon daemon;
    if (!is_made || !sim_daemon_start(&daemon, sim_built_options(router_folder)) ||
        !import_and_export()) {
        fprintf(stderr, "resident/%s: the daemon does not import and export it\n", size.name);
        return false;
    }
    const double resident = kib_of(daemon.pid, "VmRSS");
    const double peak = export_peak_kib(daemon.pid);
    if (peak < 0) {
        fprintf(stderr, "resident/%s: the peak cannot be measured\n", size.name);
        return false;
    }
    const bool is_small =
        ratio_print(std::string("resident/") + size.name, resident, resident_limit_kib, "KiB", 1);
    return ratio_print(std::string("export peak/") + size.name, peak, export_limit_kib, "KiB", 1) &&
           is_small;
}
