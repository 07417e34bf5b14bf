// Visibility of the shared objects. Both libraries are built with hidden
// visibility; only what is marked here is exported.
#pragma once

#define KOVO_EXPORT __attribute__((visibility("default")))
// Operations of the host VM layer, which the function library links against.
#define KOVO_HOST_API KOVO_EXPORT
