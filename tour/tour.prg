* A tour of the function library. Run it with: build/kovo tour/tour.prg

// What kind of value is it?
? "VALTYPE:", VALTYPE({1, 2}), VALTYPE("text"), VALTYPE(0d20240131), VALTYPE({|| NIL})
? "HB_ISNULL:", HB_ISNULL(""), HB_ISNULL({1}), HB_ISNULL({=>})
? "TYPE:", TYPE("1 + 2"), TYPE("undefinedVariable"), TYPE("1 +")

// Errors are VM error objects; an error block can substitute a value.
? "Without a handler, a bad argument reports itself:"
HB_ISNULL(0)
ERRORBLOCK({|e| "(substituted for " + e:operation + ")"})
? "With a handler:", HB_ISNULL(0)
ERRORBLOCK({|e| NIL})

// The interpreter it runs on
? "VERSION:", VERSION()
