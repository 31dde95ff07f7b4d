// DateTime, DateTimeOffset and TimeSpan read from Python's datetime values and made into them, through the value groups.
using System;
using System.Runtime.InteropServices;

namespace Orvane.WrpGen.Interop
{
    /// <summary>
    /// A DateTime as the wire carries it: Value holds the ticks in its low 62 bits and the kind in the high 2
    /// (0 unspecified, 1 UTC, 2 or 3 local); Offset is the distance from UTC in ticks, for DateTimeOffset and local times.
    /// </summary>
    public partial struct ManagedDateTime
    {
        private const int KindShift = 62;
        private const ulong TicksMask = (1UL << KindShift) - 1;

        public readonly long Ticks => (long)(Value & TicksMask);

        public static ManagedDateTime From(DateTime value)
        {
            ulong kind = value.Kind switch { DateTimeKind.Utc => 1UL, DateTimeKind.Local => 2UL, _ => 0UL };
            long offset = value.Kind == DateTimeKind.Local ? TimeZoneInfo.Local.GetUtcOffset(value).Ticks : 0;
            return new ManagedDateTime { Value = (ulong)value.Ticks | (kind << KindShift), Offset = offset };
        }

        /// <summary>The clock reading and its offset: what an aware Python datetime holds.</summary>
        public static ManagedDateTime From(DateTimeOffset value)
        {
            return new ManagedDateTime { Value = (ulong)value.Ticks, Offset = value.Offset.Ticks };
        }
    }

    /// <summary>Readers of Python date and time objects, and builders of new ones.</summary>
    public static unsafe class DateTimeMarshal
    {
        private const int GroupValuesIn = CallbackRows.GroupValuesIn;
        private const int GroupValuesOut = CallbackRows.GroupValuesOut;
        private const int FromDateTimeObject = CallbackRows.ValuesIn.Datetime;
        private const int FromDateObject = CallbackRows.ValuesIn.Date;
        private const int FromTimeObject = CallbackRows.ValuesIn.Time;
        private const int FromTimeDeltaObject = CallbackRows.ValuesIn.Timedelta;
        private const int ToDateTime = CallbackRows.ValuesOut.ToDatetime;
        private const int ToDateTimeOffset = CallbackRows.ValuesOut.ToDatetimeOffset;
        private const int ToTimeDelta = CallbackRows.ValuesOut.ToTimedelta;

        private const int AsDateTime = 1;
        private const int AsDateTimeOffset = 2;

        /// <summary>A datetime: a DateTime when naive (kind unspecified), a DateTimeOffset when aware.</summary>
        public static object ReadDateTime(IntPtr datetime) => ReadZoned(FromDateTimeObject, datetime);

        /// <summary>A date: a DateTime at midnight, kind unspecified.</summary>
        public static DateTime ReadDate(IntPtr date) => (DateTime)ReadZoned(FromDateObject, date);

        /// <summary>A time: a DateTime on 0001-01-01, or a DateTimeOffset there when the time is aware.</summary>
        public static object ReadTime(IntPtr time) => ReadZoned(FromTimeObject, time);

        public static TimeSpan ReadTimeDelta(IntPtr delta)
        {
            long ticks = 0;
            if (((delegate* unmanaged<IntPtr, long*, int>)In(FromTimeDeltaObject))(delta, &ticks) == 0)
                throw PythonException.CatchAndClear();
            return new TimeSpan(ticks);
        }

        /// <summary>A new datetime: naive for an unspecified kind, with timezone.utc for UTC, offset for local.</summary>
        public static IntPtr PyDateTime(DateTime value)
        {
            ManagedDateTime record = ManagedDateTime.From(value);
            return ((delegate* unmanaged<ManagedDateTime*, IntPtr>)Out(ToDateTime))(&record);
        }

        /// <summary>A new aware datetime with the value's clock reading and offset.</summary>
        public static IntPtr PyDateTime(DateTimeOffset value)
        {
            ManagedDateTime record = ManagedDateTime.From(value);
            return ((delegate* unmanaged<ManagedDateTime*, IntPtr>)Out(ToDateTimeOffset))(&record);
        }

        public static IntPtr PyTimeDelta(TimeSpan value)
        {
            return ((delegate* unmanaged<long, IntPtr>)Out(ToTimeDelta))(value.Ticks);
        }

        private static object ReadZoned(int row, IntPtr value)
        {
            ManagedDateTime record = default;
            int status = ((delegate* unmanaged<IntPtr, ManagedDateTime*, int>)In(row))(value, &record);
            switch (status)
            {
                case AsDateTime:
                    return new DateTime(record.Ticks, DateTimeKind.Unspecified);
                case AsDateTimeOffset:
                    return new DateTimeOffset(record.Ticks, new TimeSpan(record.Offset));
                default:
                    throw PythonException.CatchAndClear();
            }
        }

        private static IntPtr In(int number) => ((IntPtr*)NativeCallbacks.StaticGroups[GroupValuesIn])[number];
        private static IntPtr Out(int number) => ((IntPtr*)NativeCallbacks.StaticGroups[GroupValuesOut])[number];
    }
}
