// Builders of the Python object that an entry with an `object` result returns.
using System;

namespace Orvane.WrpGen.Interop
{
    /// <summary>Builders of the new Python reference that an entry with an `object` result returns.</summary>
    public static unsafe class ObjectResults
    {
        private const int GroupValuesOut = CallbackRows.GroupValuesOut;
        private const int WrapByKey = CallbackRows.ValuesOut.WrapByKey;
        private const int FromBool = CallbackRows.ValuesOut.FromBool;
        private const int FromInt32 = CallbackRows.ValuesOut.FromInt32;
        private const int FromUInt32 = CallbackRows.ValuesOut.FromUint32;
        private const int FromInt64 = CallbackRows.ValuesOut.FromInt64;
        private const int FromUInt64 = CallbackRows.ValuesOut.FromUint64;
        private const int FromDouble = CallbackRows.ValuesOut.FromDouble;
        private const int FromGuidBytes = CallbackRows.ValuesOut.FromGuidBytes;
        private const int FromUtf16Unit = CallbackRows.ValuesOut.FromChar;
        private const int NewNone = CallbackRows.References.NewNone;

        /// <summary>
        /// None for null; Python scalars, str and bytes for those managed values; a wrapper of the object's
        /// exact type for anything else (the native side raises "unknown wrapper type" if none is bound).
        /// </summary>
        public static IntPtr From(object value)
        {
            switch (value)
            {
                case null:
                    return None();
                case string s:
                    return NativeCallbacks.PyString(s);
                case byte[] bytes:
                    return PyBytes(bytes);
                case bool b:
                    return ((delegate* unmanaged<byte, IntPtr>)Row(FromBool))(b ? (byte)1 : (byte)0);
                case int i:
                    return ((delegate* unmanaged<int, IntPtr>)Row(FromInt32))(i);
                case short i:
                    return ((delegate* unmanaged<int, IntPtr>)Row(FromInt32))(i);
                case byte i:
                    return ((delegate* unmanaged<int, IntPtr>)Row(FromInt32))(i);
                case sbyte i:
                    return ((delegate* unmanaged<int, IntPtr>)Row(FromInt32))(i);
                case ushort i:
                    return ((delegate* unmanaged<int, IntPtr>)Row(FromInt32))(i);
                case uint i:
                    return ((delegate* unmanaged<uint, IntPtr>)Row(FromUInt32))(i);
                case long i:
                    return ((delegate* unmanaged<long, IntPtr>)Row(FromInt64))(i);
                case ulong i:
                    return ((delegate* unmanaged<ulong, IntPtr>)Row(FromUInt64))(i);
                case double d:
                    return ((delegate* unmanaged<double, IntPtr>)Row(FromDouble))(d);
                case float f:
                    return ((delegate* unmanaged<double, IntPtr>)Row(FromDouble))(f);
                case char c:
                    return ((delegate* unmanaged<ushort, IntPtr>)Row(FromUtf16Unit))(c);
                case Guid g:
                    return ((delegate* unmanaged<byte*, IntPtr>)Row(FromGuidBytes))((byte*)&g);
                case Enum e:
                    return ((delegate* unmanaged<long, IntPtr>)Row(FromInt64))(Convert.ToInt64(e));
                case decimal m:
                    return ValueResults.PyDecimal(m);
                case DateTime t:
                    return DateTimeMarshal.PyDateTime(t);
                case DateTimeOffset t:
                    return DateTimeMarshal.PyDateTime(t);
                case TimeSpan t:
                    return DateTimeMarshal.PyTimeDelta(t);
                case ValueType v:
                    throw new NotSupportedException("a managed " + v.GetType().FullName + " can't be returned as object yet");
                default:
                    IntPtr handle = InstanceHandles.Alloc(value);
                    return ((delegate* unmanaged<IntPtr, IntPtr, IntPtr>)Row(WrapByKey))(handle, InstanceHandles.TypeKey(value));
            }
        }

        /// <summary>A Python bytes object with a copy of the array, or None for null.</summary>
        public static IntPtr PyBytes(byte[] bytes)
        {
            if (bytes == null) return None();
            fixed (byte* p = bytes) return NativeCallbacks.BuildPyBytes(p, bytes.Length);
        }

        private static IntPtr None()
        {
            var none = (delegate* unmanaged<IntPtr>)((IntPtr*)NativeCallbacks.StaticGroups[NativeCallbacks.GroupReferences])[NewNone];
            return none();
        }

        private static IntPtr Row(int number) => ((IntPtr*)NativeCallbacks.StaticGroups[GroupValuesOut])[number];
    }
}
