// TALVENOR_API marks what the shared library exports. Everything else has hidden visibility.
#pragma once

#define TALVENOR_API __attribute__((visibility("default")))
