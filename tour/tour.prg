* A tour of the function library. Run it with: build/kovo tour/tour.prg
* Every line below calls the library the way a running xBase program does.

? "== Strings"
name := "  Ada Lovelace  "
? ALLTRIM(name), LEN(name), UPPER(name)
? LEFT("Analytical", 4), RIGHT("Engine", 3), SUBSTR("difference", 4, 3)
? PADL("42", 6, "0"), PADC("menu", 10, "*"), PADR("id", 5) + "|"
? STRTRAN("a-b-c", "-", " + "), STUFF("kovo", 1, 1, "K"), REPLICATE("=-", 5)
? "Soundex of Robert and Rupert:", SOUNDEX("Robert"), SOUNDEX("Rupert")
? "Letters of the code page (CP1251):", ISALPHA(e"\xC4"), UPPER(e"\xE4\xE0")

? "== Searching with the text tools"
text := "one fish two fish red fish blue fish"
? "2nd fish at", ATNUM("fish", text, 2), "the last one at", ATNUM("fish", text)
? "after the 3rd:", AFTERATNUM("fish", text, 3)
? ATREPL("fish", text, "cat", 2)
SETATLIKE(1, "?")
? "wildcard: ", ATNUM("f?sh", "dish fash fish")
SETATLIKE(0)

? "== Tokens"
csv := "alpha,beta,,delta"
? NUMTOKEN(csv, ","), NUMTOKEN(csv, ",", 1), TOKEN(csv, ",", 2)
TOKENINIT(csv, ",")
? TOKENNEXT(csv), TOKENNEXT(csv), TOKENNEXT(csv), TOKENEND()
TOKENEXIT()

? "== Bits and numbers"
? NUMAND("FF00", 0x0FF0), NUMOR(1, 2, 4), NUMNOT(0), HB_BITSHIFT(1, 10)
? HB_NUMTOHEX(48879), HB_HEXTONUM("BEEF"), HB_STRTOHEX("Hi")
? FAHRENHEIT(100), CELSIUS(212), MANTISSA(12), EXPONENT(12)

? "== What kind of value is it?"
? VALTYPE({1, 2}), VALTYPE("text"), VALTYPE(0d20240131), VALTYPE({|| NIL})
? HB_ISNULL(""), HB_ISNULL({1}), HB_ISNULL({=>}), TYPE("1 + 2"), TYPE("1 +")

? "== Errors are objects; an error block decides"
? "Without a handler, a bad argument reports itself:"
LEFT(5, 1)
ERRORBLOCK({|e| "(" + e:operation + " substituted)"})
? "With a handler:", LEFT(5, 1)
ERRORBLOCK({|e| NIL})

? "== The interpreter"
? VERSION()

? "== A database through ODBC: SQLite, kept in memory"
SQLALLOCEN(@env)
SQLALLOCCO(env, @dbc)
? "connected:", SQLDRIVERC(dbc, "Driver=SQLite3;Database=:memory:", @completed) == 0
SQLALLOCST(dbc, @stmt)
SQLEXECDIR(stmt, "create table city (name varchar(40), people integer)")
SQLEXECDIR(stmt, "insert into city values ('Kazan', 1308660), ('Tver', 416219), ('Pskov', 203279)")
SQLROWCOUN(stmt, @rows)
? "inserted", rows, "rows"
SQLEXECDIR(stmt, "select name, people from city order by people desc")
SQLNUMRES(stmt, @columns)
SQLDESCRIB(stmt, 1, @title, 40, @length, @type, @size, @decimals, @nullable)
? columns, "columns; the first is", title, "of SQL type", type, "and size", size
? "row:", SQLFETCH(stmt), SQLGETDATA(stmt, 1, 1, 40, @name), SQLGETDATA(stmt, 2, 1, 20, @people), name, people
? "row:", SQLFETCH(stmt), SQLGETDATA(stmt, 1, 1, 40, @name), SQLGETDATA(stmt, 2, 1, 20, @people), name, people
? "row:", SQLFETCH(stmt), SQLGETDATA(stmt, 1, 1, 40, @name), SQLGETDATA(stmt, 2, 1, 20, @people), name, people
? "no more rows:", SQLFETCH(stmt)
? "a bad query:", SQLEXECDIR(stmt, "select * from village")
SQLERROR(0, 0, stmt, @state, @native, @message)
? "  state", state, "says", message
SQLFREESTM(stmt, 1)
SQLDISCONN(dbc)
SQLFREECON(dbc)
SQLFREEENV(env)
