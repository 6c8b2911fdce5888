# SPDX-License-Identifier: MIT
"""Times of geographies as texts and arrays.

A geography counts its times as dates, moments, times of day or plain numbers. Dates and moments are
seconds from 14 September 1752, without time zones. A span of days holds up to the start of the day
after its last one.
"""

import datetime
import operator

import numpy as np

_EPOCH = np.datetime64("1752-09-14", "s")
#: What pandas can hold in nanoseconds.
_FIRST = np.datetime64("1677-09-22", "s")
_LAST = np.datetime64("2262-04-11", "s")


def text_of(time, time_format):
    """A time as the text that the library reads; an empty text for None.

    Parameters
    ----------
    time : None, str, int, date, datetime, time, timedelta, or a time of NumPy or pandas
        A year or number as int. Moments with a time zone are converted to UTC. A duration is a time
        of day.
    time_format : str
        That of the geography: a moment at midnight is a day where times are dates.
    """
    if time is None:
        return ""
    if isinstance(time, str):
        if not time.strip():
            raise ValueError("a time is not an empty text")
        return time
    if isinstance(time, np.datetime64):
        if np.isnat(time):
            raise ValueError("NaT is no time")
        time = str(time.astype("datetime64[s]") if np.datetime_data(time)[0] not in "YMD" else time)
        return _day(time) if time_format == "date" else time
    if isinstance(time, bool) or isinstance(time, np.bool_):
        raise TypeError("a truth value is no time")
    if isinstance(time, datetime.datetime):
        if time != time:
            raise ValueError("NaT is no time")
        if time.tzinfo is not None:
            time = time.astimezone(datetime.timezone.utc).replace(tzinfo=None)
        text = time.replace(microsecond=0).isoformat()[:19]
        return _day(text) if time_format == "date" else text
    if isinstance(time, (datetime.date, datetime.time)):
        return time.isoformat()
    if isinstance(time, (datetime.timedelta, np.timedelta64)):  # since midnight
        if np.isnat(np.timedelta64(time)):
            raise ValueError("NaT is no time")
        minutes, second = divmod(int(np.timedelta64(time, "s").astype(np.int64)), 60)
        return f"{minutes // 60:02}:{minutes % 60:02}:{second:02}"
    try:
        return str(operator.index(time))
    except TypeError:
        pass
    if isinstance(time, (float, np.floating)) and float(time).is_integer():
        return str(int(time))
    if hasattr(time, "ordinal") and hasattr(time, "freqstr"):  # pandas.Period
        return str(time).replace(" ", "T")
    if hasattr(time, "isoformat"):  # a time of cftime
        text = time.isoformat()
        return _day(text) if time_format == "date" else text
    raise TypeError(f"a time is a text, a number or a date, not {type(time).__name__}")


def _day(text):
    """The day of a moment at midnight; other texts stay."""
    day, mark, clock = text.partition("T")
    return day if mark and not clock.strip("0:.") else text


def texts_of(times, time_format):
    """A list of texts: all times for None, else a time or times."""
    if times is None:
        return []
    if isinstance(times, (str, bytes)) or not np.iterable(times):
        times = [times]
    texts = [text_of(time, time_format) for time in times]
    if not texts:
        raise ValueError("no times are given: None means all of them")
    return texts


def stamps(values, time_format):
    """Times of the library as an array of int64, datetime64[s] or timedelta64[s]."""
    values = np.asarray(values, dtype=np.int64)
    if time_format == "number":
        return values
    if time_format == "time":
        return values.astype("timedelta64[s]")
    return _EPOCH + values.astype("timedelta64[s]")


def stamps_of_texts(texts, time_format):
    """The same of the texts that the library shows."""
    if time_format == "time":
        return (np.array(["1970-01-01T" + text for text in texts], dtype="datetime64[s]")
                .astype(np.int64).astype("timedelta64[s]"))
    return np.array(texts, dtype="datetime64[s]")


def fits_nanoseconds(values):
    """Whether datetime64 values can be held in nanoseconds, as pandas does."""
    known = values[~np.isnat(values)]
    return not len(known) or (known.min() >= _FIRST and known.max() <= _LAST)


def for_pandas(values):
    """Values for a column: datetime64[ns], or periods of a second beyond its years."""
    from ._optional import load

    if values.dtype.kind == "m":
        return values.astype("timedelta64[ns]")
    if values.dtype.kind != "M":
        return values
    if fits_nanoseconds(values):
        return values.astype("datetime64[ns]")
    pandas = load("pandas")
    whole = values[~np.isnat(values)].astype(np.int64) % 86400 == 0
    unit, freq = ("datetime64[D]", "D") if whole.all() else ("datetime64[s]", "S")
    ordinals = values.astype(unit).astype(np.int64)
    return pandas.PeriodIndex(
        [pandas.NaT if gone else pandas.Period(ordinal=number, freq=freq)
         for number, gone in zip(ordinals.tolist(), np.isnat(values))], freq=freq)


def for_xarray(values):
    """Values for a coordinate: datetime64[ns], or times of cftime beyond its years."""
    from ._optional import load

    if values.dtype.kind == "m":
        return values.astype("timedelta64[ns]")
    if values.dtype.kind != "M" or fits_nanoseconds(values):
        return values.astype("datetime64[ns]") if values.dtype.kind == "M" else values
    cftime = load("cftime")
    seconds = (values - _EPOCH).astype(np.int64)
    flat = [cftime.num2date(int(second), "seconds since 1752-09-14", "proleptic_gregorian")
            for second in seconds.ravel()]
    array = np.empty(len(flat), dtype=object)
    array[:] = flat
    return array.reshape(values.shape)
