#include "WindowsNames.h"

namespace diag {

namespace {

const char* NtProduct(int major, int minor) {
    switch (major) {
    case 3:
    case 4:
        return " NT";
    case 5:
        return minor == 0 ? " 2000" : minor == 1 ? " XP" : minor == 2 ? " Server 2003" : " 'Too New For Me' :)";
    case 6:
        return " Vista";
    case 7:
        return " 7";
    default:
        return " Unknown";
    }
}

const char* OldProduct(int minor) {
    switch (minor) {
    case 0:
        return " 95";
    case 10:
        return " 98";
    case 90:
        return " ME";
    default:
        return " Unknown";
    }
}

} // namespace

std::string WindowsName(bool nt, int major, int minor) {
    return std::string("Microsoft Windows") + (nt ? NtProduct(major, minor) : OldProduct(minor));
}

} // namespace diag
