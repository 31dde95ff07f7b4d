// Managed values of `object` arguments that the native side classified as Python bytes, numbers, dates, Guids, lists or tuples.
using System;
using System.Collections.Generic;

namespace Orvane.WrpGen.Interop
{
    /// <summary>Reads a variant of code 4 and above through the callback rows that its code names.</summary>
    public static unsafe class VariantValues
    {
        private const int GroupValuesIn = CallbackRows.GroupValuesIn;
        private const int GroupBuffers = CallbackRows.GroupBuffers;
        private const int GroupContainers = CallbackRows.GroupContainers;
        private const int GroupLists = CallbackRows.GroupLists;
        private const int GroupSequences = CallbackRows.GroupSequences;

        private const int InTruth = CallbackRows.ValuesIn.Truth;
        private const int InInteger = CallbackRows.ValuesIn.Integer;
        private const int InFloat = CallbackRows.ValuesIn.Float;
        private const int InDecimal = CallbackRows.ValuesIn.Decimal;
        private const int InDecimalTuple = CallbackRows.ValuesIn.DecimalTuple;
        private const int InGuid = CallbackRows.ValuesIn.Guid;

        private const int BufferRecordSize = CallbackRows.Buffers.RecordSize;
        private const int BufferZero = CallbackRows.Buffers.Zero;
        private const int BufferAcquire = CallbackRows.Buffers.Acquire;
        private const int BufferRelease = CallbackRows.Buffers.Release;

        private const int ListSize = CallbackRows.Containers.ListSize;
        private const int SequenceSize = CallbackRows.Containers.SequenceSize;
        private const int ListGetItem = CallbackRows.Lists.GetItem;
        private const int SequenceGetItem = CallbackRows.Sequences.GetItem;

        // Width codes of the integer reader.
        private const int FitsInt32 = 1;
        private const int FitsInt64 = 2;
        private const int FitsUInt64 = 3;

        public static object Read(VariantArg* arg)
        {
            IntPtr value = arg->Value;
            switch (arg->Code)
            {
                case 4:
                    return ReadBytes(value);
                case 5:
                    return ((delegate* unmanaged<IntPtr, byte>)Row(GroupValuesIn, InTruth))(value) != 0;
                case 6:
                    return ReadInteger(value);
                case 7:
                    double real;
                    if (((delegate* unmanaged<IntPtr, double*, int>)Row(GroupValuesIn, InFloat))(value, &real) == 0)
                        throw PythonException.CatchAndClear();
                    return real;
                case 8:
                    return ReadDecimal(InDecimal, value);
                case 9:
                    return ReadDecimal(InDecimalTuple, value);
                case 10:
                    return DateTimeMarshal.ReadDateTime(value);
                case 11:
                    return DateTimeMarshal.ReadDate(value);
                case 12:
                    return DateTimeMarshal.ReadTime(value);
                case 13:
                    return DateTimeMarshal.ReadTimeDelta(value);
                case 14:
                    Guid guid;
                    ((delegate* unmanaged<IntPtr, Guid*, void>)Row(GroupValuesIn, InGuid))(value, &guid);
                    return guid;
                case 15:
                    return ReadList(value);
                case 16:
                    return ReadTuple(value);
                default:
                    throw new NotSupportedException("unknown variant code " + arg->Code);
            }
        }

        /// <summary>A copy of a bytes-like object's contents, leased through the buffers group.</summary>
        private static byte[] ReadBytes(IntPtr value)
        {
            int size = ((delegate* unmanaged<int>)Row(GroupBuffers, BufferRecordSize))();
            byte* record = stackalloc byte[size];
            ((delegate* unmanaged<byte*, void>)Row(GroupBuffers, BufferZero))(record);
            BufferArg view = new BufferArg { Length = -1 };
            int acquired = ((delegate* unmanaged<IntPtr, byte*, BufferArg*, int>)Row(GroupBuffers, BufferAcquire))(value, record, &view);
            try
            {
                if (acquired == 0) throw PythonException.CatchAndClear();
                return view.ToArray();
            }
            finally
            {
                if (view.Acquired != 0) ((delegate* unmanaged<byte*, void>)Row(GroupBuffers, BufferRelease))(record);
            }
        }

        /// <summary>Int32 when it fits, else Int64, else UInt64.</summary>
        private static object ReadInteger(IntPtr value)
        {
            long bits;
            switch (((delegate* unmanaged<IntPtr, long*, int>)Row(GroupValuesIn, InInteger))(value, &bits))
            {
                case FitsInt32:
                    return (int)bits;
                case FitsInt64:
                    return bits;
                case FitsUInt64:
                    return (ulong)bits;
                default:
                    throw PythonException.CatchAndClear();
            }
        }

        private static decimal ReadDecimal(int row, IntPtr value)
        {
            ManagedDecimal record;
            if (((delegate* unmanaged<IntPtr, ManagedDecimal*, int>)Row(GroupValuesIn, row))(value, &record) == 0)
                throw PythonException.CatchAndClear();
            return record.ToDecimal();
        }

        /// <summary>A managed copy of a Python list; items are read as variants in turn.</summary>
        private static List<object> ReadList(IntPtr list)
        {
            long count = ((delegate* unmanaged<IntPtr, long>)Row(GroupContainers, ListSize))(list);
            if (count < 0) throw PythonException.CatchAndClear();
            var items = new List<object>((int)count);
            var getItem = (delegate* unmanaged<IntPtr, int, VariantArg*, int>)Row(GroupLists, ListGetItem);
            for (int i = 0; i < count; i++)
            {
                VariantArg item = default;
                if (getItem(list, i, &item) != 0) throw PythonException.CatchAndClear();
                items.Add(WireArgs.ReadVariant(&item));  // borrowed from the list, which the caller holds
            }
            return items;
        }

        /// <summary>A managed copy of a Python tuple; each item's reference is dropped once it is read.</summary>
        private static object[] ReadTuple(IntPtr tuple)
        {
            long count = ((delegate* unmanaged<IntPtr, long>)Row(GroupContainers, SequenceSize))(tuple);
            if (count < 0) throw PythonException.CatchAndClear();
            var items = new object[count];
            var getItem = (delegate* unmanaged<IntPtr, int, VariantArg*, int>)Row(GroupSequences, SequenceGetItem);
            for (int i = 0; i < count; i++)
            {
                VariantArg item = default;
                if (getItem(tuple, i, &item) != 0) throw PythonException.CatchAndClear();
                try
                {
                    items[i] = WireArgs.ReadVariant(&item);
                }
                finally
                {
                    // Wrappers come as handles, their reference already dropped; every other code holds one.
                    if (item.Code != 1 && item.Code != 2) NativeCallbacks.DecRef(item.Value);
                }
            }
            return items;
        }

        private static IntPtr Row(int group, int number) => ((IntPtr*)NativeCallbacks.StaticGroups[group])[number];
    }
}
