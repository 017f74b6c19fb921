#pragma once
// Names the host may link against carry ZO_API; everything else stays hidden.
#define ZO_API __attribute__((visibility("default")))
