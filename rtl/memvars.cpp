// Memory variables: the statements PUBLIC, PRIVATE, RELEASE and CLEAR MEMORY,
// access by name, and the debugger's view. A name that is not a string is
// passed over; only PUBLIC and PRIVATE take arrays of names as well.
#include "frame/frame.h"
#include "rtl/memvar_file.h"

namespace {

constexpr int32_t GET_NAME_ERROR = 3009;
constexpr int32_t PUT_NAME_ERROR = 3010;
constexpr int32_t NO_VARIABLE_ERROR = 1003;

// Element copies of these types hold something that must be let go.
constexpr HB_TYPE COMPLEX_ELEMENT = 0xF404;

// Calls act(vm, name) for every parameter, and for every element of a
// parameter that is an array.
void forEachName(VMEngine* vm, void (*act)(VMEngine* vm, const Item* name)) {
  int count = paramCount(vm);
  for (int n = 1; n <= count; n++) {
    Item* param = paramResolved(vm, n);
    if (!(param->type & HB_IT_ARRAY)) {
      act(vm, param);
      continue;
    }
    uint32_t length = param->item.asArray.value->length;
    for (uint32_t i = 1; i <= length; i++) {
      Item element{};
      arrayGet(vm, param, i, &element);
      act(vm, &element);
      if (element.type & COMPLEX_ELEMENT) itemClear(vm, &element);
    }
  }
}

// Parameter 1's text when it is a string, else null.
const char* nameParam(VMEngine* vm) {
  Item* name = paramResolved(vm, 1);
  return itemIsString(name) ? name->item.asString.value : nullptr;
}

}  // namespace

KOVO_FUNC(__MVPUBLIC) {
  forEachName(vm, [](VMEngine* vm, const Item* name) {
    memvarCreateFromItem(vm, name, MV_PUBLIC, nullptr);
  });
}

KOVO_FUNC(__MVPRIVATE) {
  forEachName(vm, [](VMEngine* vm, const Item* name) {
    memvarCreateFromItem(vm, name, MV_PRIVATE, nullptr);
  });
}

KOVO_FUNC(__QQPUB) {
  Item* name = paramResolved(vm, 1);
  if (itemIsString(name)) memvarCreateFromItem(vm, name, MV_PUBLIC, nullptr);
}

KOVO_FUNC(__MVXRELEASE) {
  forEachName(vm, [](VMEngine* vm, const Item* name) {
    if (itemIsString(name)) memvarRelease(vm, name);
  });
}

KOVO_FUNC(__MVRELEASE) {
  const char* mask = nameParam(vm);
  if (!mask) return;
  bool include = paramIsLogical(vm, 2) ? paramIsTrue(vm, 2) : true;
  MemvarMask filter(vm, mask);
  memvarReleaseWithMask(vm, filter.expression(), include);
}

KOVO_FUNC(__MVCLEAR) {
  memvarClearAll(vm);
}

KOVO_FUNC(__MVSCOPE) {
  const char* name = nameParam(vm);
  itemPutNI(vm, returnItem(vm), name ? memvarScope(vm, name) : MV_DBG_UNKNOWN);
}

KOVO_FUNC(__MVEXIST) {
  const char* name = nameParam(vm);
  itemPutL(vm, returnItem(vm), name && memvarFindSymbol(vm, name));
}

KOVO_FUNC(__MVGET) {
  const char* name = nameParam(vm);
  if (!name) {
    err_RT_BASE_SubstR(vm, EG_ARG, GET_NAME_ERROR, nullptr, "__MVGET", 1, paramError(vm, 1));
    return;
  }
  while (true) {
    if (DynSymbol* symbol = memvarFindSymbol(vm, name)) {
      memvarGetValue(vm, returnItem(vm), symbol);
      return;
    }
    Item* error = err_RT_New(vm, ES_ERROR, ERR_SS_BASE, EG_NOVAR, NO_VARIABLE_ERROR, nullptr, name,
                             0, EF_CANRETRY);
    uint16_t action = err_Launch(vm, error);
    xItemRelease(vm, error);
    if (action != E_RETRY) {
      itemClear(vm, returnItem(vm));
      return;
    }
  }
}

KOVO_FUNC(__MVPUT) {
  const char* name = nameParam(vm);
  if (!name) {
    Item* substitute =
        err_RT_BASE_Subst(vm, EG_ARG, PUT_NAME_ERROR, nullptr, "__MVPUT", 1, paramError(vm, 1));
    if (substitute) {
      itemForwardValue(vm, returnItem(vm), substitute);
      xItemRelease(vm, substitute);
    }
    return;
  }
  Item value{};
  if (Item* given = paramResolved(vm, 2)) itemCopy(vm, &value, given);
  DynSymbol* symbol = memvarFindSymbol(vm, name);
  if (symbol) {
    memvarSetValue(vm, symbol, &value);
  } else {
    memvarCreateFromDynSymbol(vm, xdynsymGet(vm, name), MV_PRIVATE, &value);
  }
  itemForwardValue(vm, returnItem(vm), &value);
}

KOVO_FUNC(__MVDBGINFO) {
  int32_t scope = paramGetNI(vm, 1);
  if (paramCount(vm) < 2) {
    itemPutNI(vm, returnItem(vm), memvarCount(vm, scope));
    return;
  }
  const char* name = nullptr;
  Item* value = memvarDebugVariable(vm, scope, paramGetNI(vm, 2), &name);
  if (value) {
    itemCopy(vm, returnItem(vm), value);
  } else {
    itemClear(vm, returnItem(vm));
  }
  hb_storc(vm, name ? name : "?", 3);
}

KOVO_FUNC(__MVSYMBOLINFO) {
  Item names{};
  arrayNew(vm, &names, 0);
  xdynsymEval(vm, GetSymbolInfo, &names);
  itemForwardValue(vm, returnItem(vm), &names);
}

KOVO_ALIAS(__MCLEAR, __MVCLEAR);
KOVO_ALIAS(__MRELEASE, __MVRELEASE);
KOVO_ALIAS(__MXRELEASE, __MVXRELEASE);
