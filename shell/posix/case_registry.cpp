// The store is a file in the case's own directory, which goes with it.
#include "case_registry.h"

CaseRegistry::CaseRegistry() = default;

CaseRegistry::~CaseRegistry() = default;
