// The embedded demo cartridge, written out for the core to load.
#include "demo_image.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <unistd.h>

extern const unsigned char vemo_demo_image[];
extern const unsigned long vemo_demo_image_size;

namespace {

std::string scratch_path;

void remove_scratch_file() {
    if (!scratch_path.empty()) std::remove(scratch_path.c_str());
}

}  // namespace

std::string demo_image_file() {
    std::error_code error;
    std::filesystem::path folder = std::filesystem::temp_directory_path(error);
    if (error) folder = "/tmp";
    std::string name = (folder / "vemo-run-demo-XXXXXX.j64").string();
    const int fd = mkstemps(name.data(), 4);
    if (fd < 0) {
        std::fprintf(stderr, "vemo-run: cannot write the demo cartridge to %s: %s\n", name.c_str(),
                     std::strerror(errno));
        return "";
    }
    scratch_path = name;
    std::atexit(remove_scratch_file);
    const ssize_t written = write(fd, vemo_demo_image, vemo_demo_image_size);
    close(fd);
    if (written != static_cast<ssize_t>(vemo_demo_image_size)) {
        std::fprintf(stderr, "vemo-run: cannot write the demo cartridge to %s\n", name.c_str());
        return "";
    }
    return name;
}
