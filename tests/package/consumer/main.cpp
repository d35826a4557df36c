// A user of the installed package in C++.
#include <zox_volume.h>

#include <string>

int main() { return std::string(zox_GetStringStatus(ZOX_STS_NO_ERROR)) == "No error" ? 0 : 1; }
