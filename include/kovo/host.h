// Everything the function library may use of the host VM.
#pragma once

#include "kovo/host_arrays.h"
#include "kovo/host_calls.h"
#include "kovo/host_encoding.h"
#include "kovo/host_errors.h"
#include "kovo/host_files.h"
#include "kovo/host_items.h"
#include "kovo/host_memvars.h"
#include "kovo/host_misc.h"
#include "kovo/host_text.h"
#include "kovo/item.h"
#include "kovo/settings.h"
#include "kovo/vmengine.h"
