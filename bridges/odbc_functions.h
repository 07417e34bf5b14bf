// The bridge's VM functions, for native code that calls them directly: the
// tests and the benchmarks. Programs reach them by name through the host.
#pragma once

#include "kovo/vmengine.h"

extern "C" {
void SQLALLOCEN(VMEngine*);
void SQLALLOCCO(VMEngine*);
void SQLDRIVERC(VMEngine*);
void SQLCONNECT(VMEngine*);
void SQLDISCONN(VMEngine*);
void SQLFREECON(VMEngine*);
void SQLFREEENV(VMEngine*);
void SQLALLOCST(VMEngine*);
void SQLFREESTM(VMEngine*);
void SQLEXECDIR(VMEngine*);
void SQLFETCH(VMEngine*);
void SQLFETCHSC(VMEngine*);
void SQLEXTENDE(VMEngine*);
void SQLNUMRES(VMEngine*);
void SQLROWCOUN(VMEngine*);
void SQLDESCRIB(VMEngine*);
void SQLCOLATTRIBUTE(VMEngine*);
void SQLGETDATA(VMEngine*);
void SQLERROR(VMEngine*);
void SQLGETINFO(VMEngine*);
void SQLSETCONNECTOPTION(VMEngine*);
void SQLSETSTMTOPTION(VMEngine*);
void SQLGETCONNECTOPTION(VMEngine*);
void SQLGETSTMTOPTION(VMEngine*);
void SQLCOMMIT(VMEngine*);
void SQLROLLBACK(VMEngine*);
}
