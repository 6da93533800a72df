#pragma once

// ZKMB_API marks what the shared library offers to its hosts; all else stays hidden.
#define ZKMB_API __attribute__((visibility("default")))
