// Reads one list or sequence element through a cell of the generic callback table and makes it a Python value again.
using System;
using Orvane.WrpGen.Interop;

namespace Orvane.PyFigura.Probe
{
    internal static unsafe class GenericElements
    {
        private const int Kinds = 18;
        private const int GroupBuffers = 2;

        /// <summary>Status -99 when the cell holds no reader.</summary>
        public static IntPtr Read(int position, IntPtr target, int index, long* status)
        {
            IntPtr reader = *(IntPtr*)CallbackProbe.GenericCells[position];
            if (reader == IntPtr.Zero) { *status = -99; return IntPtr.Zero; }
            int kind = position % Kinds;
            bool sequence = position >= Kinds;
            IntPtr held = IntPtr.Zero;
            try
            {
                return kind == 0 ? ReadBytes(reader, sequence, target, index, &held, status)
                                 : ReadValue(reader, kind, sequence, target, index, &held, status);
            }
            finally
            {
                NativeCallbacks.DecRef(held);
            }
        }

        private static IntPtr ReadValue(IntPtr reader, int kind, bool sequence, IntPtr target, int index, IntPtr* held, long* status)
        {
            byte* output = stackalloc byte[16];
            new Span<byte>(output, 16).Clear();
            if (kind == 17) ((StringArg*)output)->Length = -1;
            *status = sequence
                ? ((delegate* unmanaged<IntPtr, int, IntPtr*, void*, int>)reader)(target, index, held, output)
                : ((delegate* unmanaged<IntPtr, int, void*, int>)reader)(target, index, output);
            if (*status != 0) return IntPtr.Zero;
            switch (kind)
            {
                case 1:
                    var range = (System.Drawing.CharacterRange)InstanceHandles.Get(((InstanceArg*)output)->Handle);
                    return NativeCallbacks.PyString(range.First + "," + range.Length);
                case 12: return ObjectResults.From(*(short*)output);
                case 13: return ObjectResults.From(*(int*)output);
                case 14: return ObjectResults.From(*(long*)output);
                case 15: return ObjectResults.From(*(float*)output);
                case 17: return NativeCallbacks.PyStringOrNone(((StringArg*)output)->ToManaged());
                default: return ObjectResults.From(InstanceHandles.Get(*(IntPtr*)output));  // a class handle
            }
        }

        private static IntPtr ReadBytes(IntPtr reader, bool sequence, IntPtr target, int index, IntPtr* held, long* status)
        {
            int size = ((delegate* unmanaged<int>)CallbackProbe.Slot(GroupBuffers, 0))();
            byte* record = stackalloc byte[size];
            ((delegate* unmanaged<byte*, void>)CallbackProbe.Slot(GroupBuffers, 1))(record);
            BufferArg arg = new BufferArg { Length = -1 };
            try
            {
                *status = sequence
                    ? ((delegate* unmanaged<IntPtr, int, IntPtr*, byte*, BufferArg*, int>)reader)(target, index, held, record, &arg)
                    : ((delegate* unmanaged<IntPtr, int, byte*, BufferArg*, int>)reader)(target, index, record, &arg);
                return *status == 0 ? ObjectResults.PyBytes(arg.ToArray()) : IntPtr.Zero;
            }
            finally
            {
                if (arg.Acquired != 0) ((delegate* unmanaged<byte*, void>)CallbackProbe.Slot(GroupBuffers, 3))(record);
            }
        }
    }
}
