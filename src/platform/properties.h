/// Android's system properties as the library uses them. On a workstation the function comes from
/// workstation/host/.
#pragma once

/// Longest property value, its terminating zero included.
constexpr int kPropertyValueMax = 92;

/// Copies the value of a property and its terminating zero into `value`; returns its length, 0 when it is
/// unset. The name is the platform's. NOLINTNEXTLINE(*-reserved-identifier, cert-dcl*)
extern "C" int __system_property_get(const char* name, char* value);
