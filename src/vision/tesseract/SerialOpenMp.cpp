#include "vision/tesseract/SerialOpenMp.h"

#include <dlfcn.h>

namespace kestrelid::vision {

SerialOpenMp::SerialOpenMp() {
    void* openMp = dlopen("libgomp.so.1", RTLD_NOW | RTLD_NOLOAD);
    if (!openMp)
        return;
    const auto activeLevels =
        reinterpret_cast<int (*)()>(dlsym(openMp, "omp_get_max_active_levels"));
    setActiveLevels_ = reinterpret_cast<void (*)(int)>(dlsym(openMp, "omp_set_max_active_levels"));
    dlclose(openMp);  // gives back what RTLD_NOLOAD counted; whoever brought the library keeps it
    if (!activeLevels || !setActiveLevels_) {
        setActiveLevels_ = nullptr;
        return;
    }
    previousLevels_ = activeLevels();
    setActiveLevels_(0);
}

SerialOpenMp::~SerialOpenMp() {
    if (setActiveLevels_)
        setActiveLevels_(previousLevels_);
}

}  // namespace kestrelid::vision
