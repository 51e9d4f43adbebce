#pragma once
// What the module tells hosts about itself: the factory record and the one registered class.
// The class id is eight bytes of our own, then the manufacturer code "Qlmz" and the plug-in code "Qvrz".

#include <cstdint>

namespace PlugClassInfo
{
inline constexpr char kVendor[] = "qelmar-audio";
inline constexpr char kUrl[] = ""; // no public address yet
inline constexpr char kEmail[] = "";
inline constexpr char kName[] = "Quorvex";
inline constexpr char kCategory[] = "Audio Module Class";
inline constexpr char kSubCategories[] = "Fx|Delay";
inline constexpr char kVersion[] = "1.2.0r14";
inline constexpr char kSdkVersion[] = "VST 3.6.0";
inline constexpr std::int32_t kClassFlags = 2;           // simple I/O mode supported
inline constexpr std::int32_t kCardinality = 0x7fffffff; // any number of instances
inline constexpr std::int32_t kFactoryFlags = 16;        // all strings of the classes are UTF-16
inline constexpr unsigned char kClassId[16] = {0x3e, 0x91, 0x5c, 0x07, 0xb2, 0x48, 0xd6, 0x6a,
                                               'Q',  'l',  'm',  'z',  'Q',  'v',  'r',  'z'};
} // namespace PlugClassInfo
