/// The Android log as the library uses it. On a workstation the function comes from workstation/host/.
#pragma once

// The name is the platform's. NOLINTNEXTLINE(bugprone-reserved-identifier, cert-dcl*)
extern "C" int __android_log_print(int priority, const char* tag, const char* format, ...)
    __attribute__((format(printf, 3, 4)));

#define MORVALE_LOG(priority, ...) __android_log_print(priority, "Morvale_capture", __VA_ARGS__)
#define MORVALE_DEBUG(...) MORVALE_LOG(3, __VA_ARGS__)
#define MORVALE_INFO(...) MORVALE_LOG(4, __VA_ARGS__)
#define MORVALE_ERROR(...) MORVALE_LOG(6, __VA_ARGS__)
