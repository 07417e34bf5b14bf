// The ODBC API's declarations as unixODBC (or iODBC) installs them.
#pragma once

#include <sql.h>
#include <sqlext.h>
