// The old dialect's functions on PostgreSQL, one CREATE OR REPLACE FUNCTION per
// statement, in the order they depend on each other. They follow Format and
// DateDiff of Vb.h: Italian conventions, halves rounded away from zero, date
// differences counted as boundaries crossed.
//
// Dates are timestamp without time zone; a date argument reaches the timestamp
// overloads through the server's implicit cast. Numbers of any type resolve to
// one of the number overloads of "Format", and a value whose type the server
// has still to decide (an untyped parameter, a bare NULL) to the text one.
//
// The bodies keep off backslashes inside plain string literals (chr(92), E''
// strings instead), so that they read the same whatever
// standard_conforming_strings says, and use no exception blocks, so that they
// can stay parallel safe.
#include "FunzioniPostgres.h"

namespace prestkt {

namespace {

// Year, Month and Day: the parts of a date, Null for Null.
const char* const kYear = R"sql(
CREATE OR REPLACE FUNCTION "Year"(timestamp) RETURNS integer
LANGUAGE sql IMMUTABLE PARALLEL SAFE
AS $body$ SELECT extract(year FROM $1)::integer $body$
)sql";

const char* const kMonth = R"sql(
CREATE OR REPLACE FUNCTION "Month"(timestamp) RETURNS integer
LANGUAGE sql IMMUTABLE PARALLEL SAFE
AS $body$ SELECT extract(month FROM $1)::integer $body$
)sql";

const char* const kDay = R"sql(
CREATE OR REPLACE FUNCTION "Day"(timestamp) RETURNS integer
LANGUAGE sql IMMUTABLE PARALLEL SAFE
AS $body$ SELECT extract(day FROM $1)::integer $body$
)sql";

// DateDiff(interval, d1, d2): the boundaries of the interval's unit crossed
// going from d1 to d2, negative when d2 comes first. "w" counts whole weeks of
// days, "ww" the Sundays crossed (weeks begin on Sunday).
const char* const kDateDiff = R"sql(
CREATE OR REPLACE FUNCTION "DateDiff"(text, timestamp, timestamp) RETURNS bigint
LANGUAGE plpgsql IMMUTABLE PARALLEL SAFE
AS $body$
DECLARE
  unita text := lower($1);
  da timestamp := $2;
  a timestamp := $3;
BEGIN
  IF da IS NULL OR a IS NULL THEN
    RETURN NULL;
  END IF;
  CASE unita
    WHEN 's' THEN
      RETURN (extract(epoch FROM date_trunc('second', a)) - extract(epoch FROM date_trunc('second', da)))::bigint;
    WHEN 'n' THEN
      RETURN ((extract(epoch FROM date_trunc('minute', a)) - extract(epoch FROM date_trunc('minute', da))) / 60)::bigint;
    WHEN 'h' THEN
      RETURN ((extract(epoch FROM date_trunc('hour', a)) - extract(epoch FROM date_trunc('hour', da))) / 3600)::bigint;
    WHEN 'd', 'y' THEN
      RETURN a::date - da::date;
    WHEN 'w' THEN
      -- integer division: whole weeks, toward zero
      RETURN (a::date - da::date) / 7;
    WHEN 'ww' THEN
      -- from the Sunday that opens the week of each date
      RETURN ((a::date - extract(dow FROM a)::integer) - (da::date - extract(dow FROM da)::integer)) / 7;
    WHEN 'm' THEN
      RETURN (extract(year FROM a)::bigint * 12 + extract(month FROM a)::bigint)
           - (extract(year FROM da)::bigint * 12 + extract(month FROM da)::bigint);
    WHEN 'q' THEN
      RETURN (extract(year FROM a)::bigint - extract(year FROM da)::bigint) * 4
           + ((extract(month FROM a)::bigint - 1) / 3 - (extract(month FROM da)::bigint - 1) / 3);
    WHEN 'yyyy' THEN
      RETURN extract(year FROM a)::bigint - extract(year FROM da)::bigint;
    ELSE
      RAISE EXCEPTION 'Invalid procedure call or argument (5)' USING ERRCODE = 'invalid_parameter_value';
  END CASE;
END
$body$
)sql";

// Format of a number with a digit pattern: 0 a digit always written, # a digit
// written when there is one, the first . the decimal point, a , between
// placeholders the thousands grouping and after the last placeholder of the
// whole part a division by a thousand, % a multiplication by a hundred; any
// other character, "quoted text" and \x are written as they are. Decimal comma
// and thousands dot. The digits of the whole part fill the placeholders from
// the right; those beyond the placeholders go in front of the first one.
const char* const kFormatNumero = R"sql(
CREATE OR REPLACE FUNCTION "Format"(numeric, text) RETURNS text
LANGUAGE plpgsql IMMUTABLE PARALLEL SAFE
AS $body$
DECLARE
  p text := $2;
  lunghezza integer;
  i integer := 1;
  c text;
  resto text;
  j integer;
  tipi text[] := '{}';   -- '0', '#', '.', ',', '%' or 'L' for a literal
  testi text[] := '{}';  -- the text of a literal or of '%'
  quanti integer;
  punto integer;
  prima_cifra integer := 0;
  ultima_cifra integer := 0;
  primo_zero integer := 0;
  cifre_intere integer := 0;
  cifre_decimali integer := 0;
  percento integer := 0;
  raggruppa boolean := false;
  scala integer := 0;
  minimo integer := 0;
  r numeric;
  negativo boolean;
  intero text;
  decimali text := '';
  visibili boolean[];
  k integer;
  eccedenza integer;
  segnaposto integer := 0;
  uscita text := '';
BEGIN
  IF $1 IS NULL OR p IS NULL THEN
    RETURN NULL;
  END IF;
  IF $1 IN ('NaN'::numeric, 'Infinity'::numeric, '-Infinity'::numeric) THEN
    RETURN $1::text;
  END IF;

  lunghezza := length(p);
  WHILE i <= lunghezza LOOP
    c := substr(p, i, 1);
    IF c = chr(92) THEN
      IF i < lunghezza THEN
        i := i + 1;
        tipi := tipi || 'L'::text;
        testi := testi || substr(p, i, 1);
      END IF;
    ELSIF c = '"' THEN
      resto := substr(p, i + 1);
      j := strpos(resto, '"');
      IF j = 0 THEN
        j := length(resto) + 1;
      END IF;
      tipi := tipi || 'L'::text;
      testi := testi || substr(resto, 1, j - 1);
      i := i + j;
    ELSIF c = ';' THEN
      RAISE EXCEPTION 'Format pattern not supported: %', p USING ERRCODE = 'invalid_parameter_value';
    ELSIF c IN ('0', '#', ',', '%') OR (c = '.' AND NOT ('.' = ANY (tipi))) THEN
      tipi := tipi || c;
      testi := testi || CASE WHEN c = '%' THEN '%' ELSE '' END;
    ELSE
      tipi := tipi || 'L'::text;
      testi := testi || c;
    END IF;
    i := i + 1;
  END LOOP;

  quanti := coalesce(array_length(tipi, 1), 0);
  punto := coalesce(array_position(tipi, '.'), quanti + 1);
  FOR idx IN 1..quanti LOOP
    IF tipi[idx] = '%' THEN
      percento := percento + 1;
    END IF;
    CONTINUE WHEN tipi[idx] NOT IN ('0', '#');
    IF idx < punto THEN
      IF prima_cifra = 0 THEN
        prima_cifra := idx;
      END IF;
      ultima_cifra := idx;
      IF primo_zero = 0 AND tipi[idx] = '0' THEN
        primo_zero := idx;
      END IF;
      cifre_intere := cifre_intere + 1;
    ELSE
      cifre_decimali := cifre_decimali + 1;
    END IF;
  END LOOP;
  IF cifre_intere + cifre_decimali = 0 THEN
    RAISE EXCEPTION 'Format pattern not supported: %', p USING ERRCODE = 'invalid_parameter_value';
  END IF;
  IF prima_cifra > 0 THEN
    FOR idx IN 1..punto - 1 LOOP
      CONTINUE WHEN tipi[idx] <> ',';
      IF idx > prima_cifra AND idx < ultima_cifra THEN
        raggruppa := true;
      END IF;
      IF idx > ultima_cifra THEN
        scala := scala + 1;
      END IF;
    END LOOP;
  END IF;

  r := $1;
  IF percento > 0 OR scala > 0 THEN
    r := r * power(10::numeric, 2 * percento - 3 * scala);
  END IF;
  -- round() of numeric takes halves away from zero
  r := round(abs(r), cifre_decimali);
  negativo := $1 < 0 AND r <> 0;

  -- The whole part, at least as many digits as the placeholders from the first 0.
  intero := CASE WHEN r >= 1 THEN trunc(r)::text ELSE '' END;
  IF primo_zero > 0 THEN
    FOR idx IN primo_zero..punto - 1 LOOP
      IF tipi[idx] IN ('0', '#') THEN
        minimo := minimo + 1;
      END IF;
    END LOOP;
  END IF;
  IF length(intero) < minimo THEN
    intero := lpad(intero, minimo, '0');
  END IF;
  IF cifre_decimali > 0 THEN
    decimali := rpad(split_part(r::text, '.', 2), cifre_decimali, '0');
  END IF;

  -- Trailing # placeholders drop their zeros, up to the last 0 placeholder.
  visibili := array_fill(true, ARRAY[cifre_decimali]);
  k := cifre_decimali;
  FOR idx IN REVERSE quanti..punto + 1 LOOP
    EXIT WHEN k < 1;
    CONTINUE WHEN tipi[idx] NOT IN ('0', '#');
    EXIT WHEN tipi[idx] = '0' OR substr(decimali, k, 1) <> '0';
    visibili[k] := false;
    k := k - 1;
  END LOOP;

  IF negativo THEN
    uscita := '-';
  END IF;
  eccedenza := length(intero) - cifre_intere;
  FOR idx IN 1..punto - 1 LOOP
    IF tipi[idx] IN ('L', '%') THEN
      uscita := uscita || testi[idx];
    ELSIF tipi[idx] IN ('0', '#') THEN
      IF raggruppa THEN
        IF segnaposto = 0 THEN
          uscita := uscita || reverse(regexp_replace(reverse(intero), '([0-9]{3})(?=[0-9])', E'\\1.', 'g'));
        END IF;
      ELSE
        IF segnaposto = 0 AND eccedenza > 0 THEN
          uscita := uscita || left(intero, eccedenza);
        END IF;
        IF eccedenza + segnaposto >= 0 THEN
          uscita := uscita || substr(intero, eccedenza + segnaposto + 1, 1);
        END IF;
      END IF;
      segnaposto := segnaposto + 1;
    END IF;
  END LOOP;
  IF cifre_intere = 0 THEN
    uscita := uscita || intero;
  END IF;
  IF punto <= quanti THEN
    uscita := uscita || ',';
    k := 0;
    FOR idx IN punto + 1..quanti LOOP
      IF tipi[idx] IN ('L', '%') THEN
        uscita := uscita || testi[idx];
      ELSIF tipi[idx] IN ('0', '#') THEN
        k := k + 1;
        IF visibili[k] THEN
          uscita := uscita || substr(decimali, k, 1);
        END IF;
      END IF;
    END LOOP;
  END IF;
  RETURN uscita;
END
$body$
)sql";

// A double goes to numeric with fifteen significant digits, as the platform
// keeps them: 1.005 formats as 1,01 and not by its binary 1.00499999...
const char* const kFormatDouble = R"sql(
CREATE OR REPLACE FUNCTION "Format"(double precision, text) RETURNS text
LANGUAGE sql IMMUTABLE PARALLEL SAFE
AS $body$ SELECT "Format"($1::numeric, $2) $body$
)sql";

// Whole numbers too large for a double's fifteen digits keep all of theirs.
// smallint and integer resolve to the double precision overload (the
// preferred type of the numbers), which holds them exactly.
const char* const kFormatBigint = R"sql(
CREATE OR REPLACE FUNCTION "Format"(bigint, text) RETURNS text
LANGUAGE sql IMMUTABLE PARALLEL SAFE
AS $body$ SELECT "Format"($1::numeric, $2) $body$
)sql";

// Format of a date: d dd (day), ddd dddd (Italian day name), ddddd (dd/mm/yyyy),
// dddddd (the long date), m mm (month, or minutes right after an hour or right
// before a second, literals between not counting), mmm mmmm (Italian month
// name), y (day of the year), yy yyyy, h hh, n nn, s ss, w (weekday, Sunday 1),
// ww (week of the year, weeks from Sunday), q (quarter), AM/PM and A/P (and
// then a 12-hour clock), ttttt (hh:nn:ss). Letters in either case; any other
// character, "quoted text" and \x are written as they are.
const char* const kFormatData = R"sql(
CREATE OR REPLACE FUNCTION "Format"(timestamp, text) RETURNS text
LANGUAGE plpgsql IMMUTABLE PARALLEL SAFE
AS $body$
DECLARE
  p text := $2;
  lunghezza integer;
  i integer := 1;
  c text;
  lettera text;
  resto text;
  j integer;
  serie integer;
  pezzo integer;
  tipi text[] := '{}';      -- the date letter, 'A' for AM/PM, 'T' for ttttt, 'L' for a literal
  conteggi integer[] := '{}';
  testi text[] := '{}';     -- a literal; for AM/PM the morning designator
  altri text[] := '{}';     -- for AM/PM the afternoon designator
  quanti integer;
  prima integer;
  dopo integer;
  dodici boolean := false;
  anno integer;
  mese integer;
  giorno integer;
  ore integer;
  minuti integer;
  secondi integer;
  settimana integer;  -- Sunday 0
  ora integer;
  giorni text[];
  giorni_brevi text[];
  mesi text[];
  mesi_brevi text[];
  uscita text := '';
BEGIN
  IF $1 IS NULL OR p IS NULL THEN
    RETURN NULL;
  END IF;
  -- the patterns of the lists, straight to the server's own formatting
  CASE p
    WHEN 'dd/mm/yyyy' THEN RETURN to_char($1, 'DD/MM/FMYYYY');
    WHEN 'hh:nn' THEN RETURN to_char($1, 'HH24:MI');
    WHEN 'dd/mm/yyyy hh:nn' THEN RETURN to_char($1, 'DD/MM/FMYYYY HH24:MI');
    WHEN 'dd/mm/yyyy hh:nn:ss' THEN RETURN to_char($1, 'DD/MM/FMYYYY HH24:MI:SS');
    WHEN 'yyyy' THEN RETURN to_char($1, 'FMYYYY');
    ELSE NULL;
  END CASE;

  lunghezza := length(p);
  WHILE i <= lunghezza LOOP
    c := substr(p, i, 1);
    lettera := lower(c);
    IF c = chr(92) THEN
      IF i < lunghezza THEN
        i := i + 1;
        tipi := tipi || 'L'::text;
        conteggi := conteggi || 0;
        testi := testi || substr(p, i, 1);
        altri := altri || ''::text;
      END IF;
    ELSIF c = '"' THEN
      resto := substr(p, i + 1);
      j := strpos(resto, '"');
      IF j = 0 THEN
        j := length(resto) + 1;
      END IF;
      tipi := tipi || 'L'::text;
      conteggi := conteggi || 0;
      testi := testi || substr(resto, 1, j - 1);
      altri := altri || ''::text;
      i := i + j;
    ELSIF upper(substr(p, i, 5)) = 'AM/PM' THEN
      tipi := tipi || 'A'::text;
      conteggi := conteggi || 0;
      testi := testi || substr(p, i, 2);
      altri := altri || substr(p, i + 3, 2);
      i := i + 4;
    ELSIF upper(substr(p, i, 3)) = 'A/P' THEN
      tipi := tipi || 'A'::text;
      conteggi := conteggi || 0;
      testi := testi || substr(p, i, 1);
      altri := altri || substr(p, i + 2, 1);
      i := i + 2;
    ELSIF lower(substr(p, i, 5)) = 'ttttt' THEN
      tipi := tipi || 'T'::text;
      conteggi := conteggi || 0;
      testi := testi || ''::text;
      altri := altri || ''::text;
      i := i + 4;
    ELSIF c IN ('0', '#') THEN
      RAISE EXCEPTION 'Format pattern not supported: %', p USING ERRCODE = 'invalid_parameter_value';
    ELSIF lettera IN ('d', 'm', 'y', 'h', 'n', 's', 'w', 'q') THEN
      serie := 1;
      WHILE i + serie <= lunghezza AND lower(substr(p, i + serie, 1)) = lettera LOOP
        serie := serie + 1;
      END LOOP;
      i := i + serie - 1;
      -- A run longer than the longest token of its letter goes on as a new token.
      WHILE serie > 0 LOOP
        pezzo := CASE lettera
                   WHEN 'd' THEN least(serie, 6)
                   WHEN 'm' THEN least(serie, 4)
                   WHEN 'y' THEN CASE WHEN serie >= 4 THEN 4 WHEN serie >= 2 THEN 2 ELSE 1 END
                   WHEN 'q' THEN 1
                   ELSE least(serie, 2)
                 END;
        tipi := tipi || lettera;
        conteggi := conteggi || pezzo;
        testi := testi || ''::text;
        altri := altri || ''::text;
        serie := serie - pezzo;
      END LOOP;
    ELSE
      tipi := tipi || 'L'::text;
      conteggi := conteggi || 0;
      testi := testi || c;
      altri := altri || ''::text;
    END IF;
    i := i + 1;
  END LOOP;

  quanti := coalesce(array_length(tipi, 1), 0);
  IF array_position(tipi, 'A') IS NOT NULL THEN
    dodici := true;
  END IF;
  IF quanti = 0 OR tipi <@ ARRAY['L'] THEN
    RAISE EXCEPTION 'Format pattern not supported: %', p USING ERRCODE = 'invalid_parameter_value';
  END IF;

  -- m and mm are minutes right after an hour or right before a second.
  FOR idx IN 1..quanti LOOP
    CONTINUE WHEN tipi[idx] <> 'm' OR conteggi[idx] > 2;
    prima := idx - 1;
    WHILE prima >= 1 AND tipi[prima] = 'L' LOOP
      prima := prima - 1;
    END LOOP;
    dopo := idx + 1;
    WHILE dopo <= quanti AND tipi[dopo] = 'L' LOOP
      dopo := dopo + 1;
    END LOOP;
    IF (prima >= 1 AND tipi[prima] = 'h') OR (dopo <= quanti AND tipi[dopo] = 's') THEN
      tipi[idx] := 'n';
    END IF;
  END LOOP;

  anno := extract(year FROM $1);
  mese := extract(month FROM $1);
  giorno := extract(day FROM $1);
  ore := extract(hour FROM $1);
  minuti := extract(minute FROM $1);
  secondi := floor(extract(second FROM $1));
  settimana := extract(dow FROM $1);
  giorni := ARRAY['domenica', 'luned' || chr(236), 'marted' || chr(236), 'mercoled' || chr(236),
                  'gioved' || chr(236), 'venerd' || chr(236), 'sabato'];
  giorni_brevi := ARRAY['dom', 'lun', 'mar', 'mer', 'gio', 'ven', 'sab'];
  mesi := ARRAY['gennaio', 'febbraio', 'marzo', 'aprile', 'maggio', 'giugno', 'luglio',
                'agosto', 'settembre', 'ottobre', 'novembre', 'dicembre'];
  mesi_brevi := ARRAY['gen', 'feb', 'mar', 'apr', 'mag', 'giu', 'lug', 'ago', 'set', 'ott', 'nov', 'dic'];
  ora := CASE WHEN NOT dodici THEN ore WHEN ore % 12 = 0 THEN 12 ELSE ore % 12 END;
  FOR idx IN 1..quanti LOOP
    uscita := uscita || CASE tipi[idx]
      WHEN 'L' THEN testi[idx]
      WHEN 'd' THEN CASE conteggi[idx]
          WHEN 1 THEN giorno::text
          WHEN 2 THEN lpad(giorno::text, 2, '0')
          WHEN 3 THEN giorni_brevi[settimana + 1]
          WHEN 4 THEN giorni[settimana + 1]
          WHEN 5 THEN lpad(giorno::text, 2, '0') || '/' || lpad(mese::text, 2, '0') || '/' || anno::text
          ELSE giorni[settimana + 1] || ' ' || giorno::text || ' ' || mesi[mese] || ' ' || anno::text
        END
      WHEN 'm' THEN CASE conteggi[idx]
          WHEN 1 THEN mese::text
          WHEN 2 THEN lpad(mese::text, 2, '0')
          WHEN 3 THEN mesi_brevi[mese]
          ELSE mesi[mese]
        END
      WHEN 'y' THEN CASE conteggi[idx]
          WHEN 1 THEN extract(doy FROM $1)::integer::text
          WHEN 2 THEN lpad((anno % 100)::text, 2, '0')
          ELSE anno::text
        END
      WHEN 'h' THEN CASE conteggi[idx] WHEN 1 THEN ora::text ELSE lpad(ora::text, 2, '0') END
      WHEN 'n' THEN CASE conteggi[idx] WHEN 1 THEN minuti::text ELSE lpad(minuti::text, 2, '0') END
      WHEN 's' THEN CASE conteggi[idx] WHEN 1 THEN secondi::text ELSE lpad(secondi::text, 2, '0') END
      WHEN 'w' THEN CASE conteggi[idx]
          WHEN 1 THEN (settimana + 1)::text
          -- the week holding 1 January is the first
          ELSE ((extract(doy FROM $1)::integer - 1 + extract(dow FROM date_trunc('year', $1))::integer) / 7 + 1)::text
        END
      WHEN 'q' THEN ((mese - 1) / 3 + 1)::text
      WHEN 'A' THEN CASE WHEN ore < 12 THEN testi[idx] ELSE altri[idx] END
      ELSE lpad(ore::text, 2, '0') || ':' || lpad(minuti::text, 2, '0') || ':' || lpad(secondi::text, 2, '0')
    END;
  END LOOP;
  RETURN uscita;
END
$body$
)sql";

// Format of a text: read as a number under a digit pattern and as a date under
// a date pattern, when it reads as one; otherwise the text as it is. Numbers as
// the users write them ("1.234,5") or as stored ("1234.5"); dates as stored
// (yyyy-mm-dd[ hh:nn[:ss]]), as written (dd/mm/yyyy[ hh:nn[:ss]]), a time of day
// alone (on 30/12/1899), or a date serial (days since 30/12/1899).
const char* const kFormatTesto = R"sql(
CREATE OR REPLACE FUNCTION "Format"(text, text) RETURNS text
LANGUAGE plpgsql IMMUTABLE PARALLEL SAFE
AS $body$
DECLARE
  s text := btrim($1);
  p text;
  cifre text;
  x numeric;
  m text[];
  anno integer;
  mese integer;
  giorno integer;
  ore integer := 0;
  minuti integer := 0;
  secondi integer := 0;
BEGIN
  IF $1 IS NULL OR $2 IS NULL THEN
    RETURN NULL;
  END IF;
  -- the pattern without its quoted and escaped characters
  p := regexp_replace($2, E'\\\\.|"[^"]*("|$)', '', 'g');

  cifre := CASE
    WHEN strpos(s, ',') > 0 THEN replace(replace(s, '.', ''), ',', '.')
    WHEN length(s) - length(replace(s, '.', '')) > 1 THEN replace(s, '.', '')
    ELSE s
  END;
  IF cifre ~ E'^[+-]?([0-9]+\\.?[0-9]*|\\.[0-9]+)([eE][+-]?[0-9]{1,4})?$' THEN
    x := cifre::numeric;
    IF abs(x) > 1.7976931348623157e308 THEN
      x := NULL;
    END IF;
  END IF;

  IF p ~ '[0#]' THEN
    IF x IS NOT NULL THEN
      RETURN "Format"(x::double precision, $2);
    END IF;
    RETURN $1;
  END IF;
  IF p !~* '[dmyhnswq]|a/p|ttttt' THEN
    RETURN $1;
  END IF;

  m := regexp_match(s, '^([0-9]{4})-([0-9]{1,2})-([0-9]{1,2})'
                       || '(?:[ T]([0-9]{1,2}):([0-9]{2})(?::([0-9]{2})(?:[.,][0-9]+)?)?)?'
                       || '(?:Z|[+-][0-9]{2}(?::?[0-9]{2})?)?$');
  IF m IS NOT NULL THEN
    anno := m[1];
    mese := m[2];
    giorno := m[3];
    ore := coalesce(m[4]::integer, 0);
    minuti := coalesce(m[5]::integer, 0);
    secondi := coalesce(m[6]::integer, 0);
  ELSE
    m := regexp_match(s, '^([0-9]{1,2})/([0-9]{1,2})/([0-9]{4}|[0-9]{2})'
                         || '(?:[[:space:]]+([0-9]{1,2})[:.]([0-9]{2})(?:[:.]([0-9]{2}))?)?$');
    IF m IS NOT NULL THEN
      giorno := m[1];
      mese := m[2];
      anno := m[3];
      IF length(m[3]) = 2 THEN
        anno := CASE WHEN anno < 30 THEN 2000 + anno ELSE 1900 + anno END;
      END IF;
      ore := coalesce(m[4]::integer, 0);
      minuti := coalesce(m[5]::integer, 0);
      secondi := coalesce(m[6]::integer, 0);
    ELSE
      m := regexp_match(s, '^([0-9]{1,2}):([0-9]{2})(?::([0-9]{2}))?$');
      IF m IS NOT NULL THEN
        anno := 1899;
        mese := 12;
        giorno := 30;
        ore := m[1];
        minuti := m[2];
        secondi := coalesce(m[3]::integer, 0);
      END IF;
    END IF;
  END IF;

  IF anno IS NOT NULL THEN
    IF anno >= 1 AND mese BETWEEN 1 AND 12 AND giorno >= 1
       AND giorno <= extract(day FROM make_date(anno, mese, 1) + interval '1 month' - interval '1 day')
       AND ore <= 23 AND minuti <= 59 AND secondi <= 59 THEN
      RETURN "Format"(make_timestamp(anno, mese, giorno, ore, minuti, secondi), $2);
    END IF;
    RETURN $1;
  END IF;

  -- a date serial: the whole part the days, the fraction the time of day
  IF x IS NOT NULL AND x >= -657434 AND x < 2958466 THEN
    RETURN "Format"(timestamp '1899-12-30' + trunc(x)::integer * interval '1 day'
                    + round(abs(x - trunc(x)) * 86400)::integer * interval '1 second', $2);
  END IF;
  RETURN $1;
END
$body$
)sql";

// Like on a date or a number compares its text, as SQLite compares the text it
// stores: a date as "yyyy-mm-dd hh:nn:ss".
constexpr const char* kLikeData = R"sql(
CREATE OR REPLACE FUNCTION "LikeTesto"(a timestamp, b text) RETURNS boolean
LANGUAGE sql IMMUTABLE PARALLEL SAFE AS $body$ SELECT to_char(a, 'YYYY-MM-DD HH24:MI:SS') ILIKE b $body$
)sql";
constexpr const char* kLikeIntero = R"sql(
CREATE OR REPLACE FUNCTION "LikeTesto"(a bigint, b text) RETURNS boolean
LANGUAGE sql IMMUTABLE PARALLEL SAFE AS $body$ SELECT a::text ILIKE b $body$
)sql";
constexpr const char* kLikeDouble = R"sql(
CREATE OR REPLACE FUNCTION "LikeTesto"(a double precision, b text) RETURNS boolean
LANGUAGE sql IMMUTABLE PARALLEL SAFE AS $body$ SELECT a::text ILIKE b $body$
)sql";
constexpr const char* kOperatoriLike = R"sql(
DO $body$
DECLARE
  t text;
BEGIN
  FOREACH t IN ARRAY ARRAY['timestamp', 'bigint', 'double precision'] LOOP
    IF NOT EXISTS (SELECT 1 FROM pg_operator WHERE oprname = '~~*' AND oprleft = t::regtype
                   AND oprright = 'text'::regtype) THEN
      EXECUTE format('CREATE OPERATOR ~~* (LEFTARG = %s, RIGHTARG = text, FUNCTION = "LikeTesto")', t);
    END IF;
  END LOOP;
END
$body$
)sql";

}  // namespace

QStringList FunzioniPostgres() {
  QStringList out;
  for (const char* f : {kYear, kMonth, kDay, kDateDiff, kFormatNumero, kFormatDouble, kFormatBigint,
                        kFormatData, kFormatTesto, kLikeData, kLikeIntero, kLikeDouble, kOperatoriLike})
    out << QString::fromUtf8(f).trimmed();
  return out;
}

}  // namespace prestkt
