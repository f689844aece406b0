#pragma once

namespace kestrelid::vision {

// While it lives, OpenMP loops of the calling thread run on that thread alone. Other threads keep
// their settings. Does nothing where the process holds no libgomp.
class SerialOpenMp {
public:
    SerialOpenMp();
    ~SerialOpenMp();
    SerialOpenMp(const SerialOpenMp&) = delete;
    SerialOpenMp& operator=(const SerialOpenMp&) = delete;

private:
    void (*setActiveLevels_)(int) = nullptr;
    int previousLevels_ = 1;
};

}  // namespace kestrelid::vision
