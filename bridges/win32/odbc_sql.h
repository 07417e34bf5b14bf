// The ODBC API's declarations on Windows, which build on windows.h's types.
#pragma once

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <sql.h>
#include <sqlext.h>
