/// Lets a workstation program read the library's log, whatever MORVALE_LOG shows of it.
#pragma once

extern "C" {

/// Gets every message, without the line end. Priorities are Android's: 3 debug, 4 info, 6 error.
using morvale_log_observer = void (*)(int priority, const char* text, void* context);

/// One observer at a time; null ends the observation.
void morvale_host_observe_log(morvale_log_observer observer, void* context);
}
