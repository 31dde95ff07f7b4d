// Python objects made from managed decimal and Guid results, through the values-out group.
using System;

namespace Orvane.WrpGen.Interop
{
    /// <summary>Builders of the new Python reference that an entry with a decimal or Guid result returns.</summary>
    public static unsafe class ValueResults
    {
        private const int GroupValuesOut = CallbackRows.GroupValuesOut;
        private const int FromDecimalRecord = CallbackRows.ValuesOut.FromDecimalRecord;
        private const int FromGuidBytes = CallbackRows.ValuesOut.FromGuidBytes;

        /// <summary>A new decimal.Decimal, or null with a Python exception set.</summary>
        public static IntPtr PyDecimal(decimal value)
        {
            // The builder divides the record in place: it gets a copy on this stack.
            ManagedDecimal record = ManagedDecimal.FromDecimal(value);
            return ((delegate* unmanaged<ManagedDecimal*, IntPtr>)Row(FromDecimalRecord))(&record);
        }

        /// <summary>A new uuid.UUID with the Guid's bytes as bytes_le, or null with a Python exception set.</summary>
        public static IntPtr PyGuid(Guid value)
        {
            byte* bytes = stackalloc byte[16];
            value.TryWriteBytes(new Span<byte>(bytes, 16));
            return ((delegate* unmanaged<byte*, IntPtr>)Row(FromGuidBytes))(bytes);
        }

        private static IntPtr Row(int number) => ((IntPtr*)NativeCallbacks.StaticGroups[GroupValuesOut])[number];
    }
}
