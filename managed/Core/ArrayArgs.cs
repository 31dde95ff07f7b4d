// Reads an array argument into a managed array: a handle's array as it is, or a copy of a Python list or sequence.
using System;

namespace Orvane.WrpGen.Interop
{
    public static unsafe class ArrayArgs
    {
        private const int KindHandle = 0;
        private const int KindList = 2;
        private const int KindSequence = 3;
        private const int GroupBuffers = CallbackRows.GroupBuffers;
        private const int BufferRecordSize = CallbackRows.Buffers.RecordSize;
        private const int BufferZero = CallbackRows.Buffers.Zero;
        private const int BufferRelease = CallbackRows.Buffers.Release;
        private const int GroupContainers = CallbackRows.GroupContainers;
        private const int ListSize = CallbackRows.Containers.ListSize;
        private const int SequenceSize = CallbackRows.Containers.SequenceSize;
        private const int SequenceHalf = CallbackRows.GenericKinds.Count;

        /// <summary>
        /// The array of an ArrayArg. Elements of a list or sequence are fetched one at a time by the element
        /// reader of <paramref name="kind"/> into a wire record, which <paramref name="toManaged"/> turns into T.
        /// </summary>
        public static T[] Read<T, TWire>(ArrayArg* arg, int kind, delegate*<TWire*, T> toManaged) where TWire : unmanaged
        {
            switch (arg->Kind)
            {
                case KindHandle:
                    return (T[])InstanceHandles.Get(arg->Value);
                case KindList:
                    return FromList(arg->Value, kind, toManaged);
                case KindSequence:
                    return FromSequence(arg->Value, kind, toManaged);
                default:
                    throw new NotSupportedException("an array argument of kind " + arg->Kind + " is not known");
            }
        }

        private static T[] FromList<T, TWire>(IntPtr list, int kind, delegate*<TWire*, T> toManaged) where TWire : unmanaged
        {
            long count = Size(list, ListSize);
            var read = (delegate* unmanaged<IntPtr, int, TWire*, int>)Reader(kind);
            var result = new T[count];
            for (int i = 0; i < result.Length; i++)
            {
                TWire wire = default;
                if (read(list, i, &wire) != 0) throw new PythonErrorPending();
                result[i] = toManaged(&wire);
            }
            return result;
        }

        private static T[] FromSequence<T, TWire>(IntPtr sequence, int kind, delegate*<TWire*, T> toManaged) where TWire : unmanaged
        {
            long count = Size(sequence, SequenceSize);
            var read = (delegate* unmanaged<IntPtr, int, IntPtr*, TWire*, int>)Reader(SequenceHalf + kind);
            var result = new T[count];
            for (int i = 0; i < result.Length; i++)
            {
                TWire wire = default;
                IntPtr held = IntPtr.Zero;
                if (read(sequence, i, &held, &wire) != 0) throw new PythonErrorPending();
                try
                {
                    result[i] = toManaged(&wire);
                }
                finally
                {
                    NativeCallbacks.DecRef(held);  // the wire record may point into the item until here
                }
            }
            return result;
        }

        /// <summary>
        /// byte[][] from an array argument. Byte-array elements are read through a buffer record that
        /// the element reader fills and leases; each lease is given back once its bytes are copied.
        /// </summary>
        public static byte[][] ReadByteArrays(ArrayArg* arg)
        {
            switch (arg->Kind)
            {
                case KindHandle:
                    return (byte[][])InstanceHandles.Get(arg->Value);
                case KindList:
                case KindSequence:
                    return ByteArraysFrom(arg->Value, arg->Kind == KindSequence);
                default:
                    throw new NotSupportedException("an array argument of kind " + arg->Kind + " is not known");
            }
        }

        private static byte[][] ByteArraysFrom(IntPtr items, bool sequence)
        {
            long count = Size(items, sequence ? SequenceSize : ListSize);
            var buffers = (IntPtr*)NativeCallbacks.StaticGroups[GroupBuffers];
            int recordSize = ((delegate* unmanaged<int>)buffers[BufferRecordSize])();
            byte* record = stackalloc byte[recordSize];
            var result = new byte[count][];
            for (int i = 0; i < result.Length; i++)
            {
                ((delegate* unmanaged<byte*, void>)buffers[BufferZero])(record);
                BufferArg view = new BufferArg { Length = -1 };
                IntPtr held = IntPtr.Zero;
                int status = sequence
                    ? ((delegate* unmanaged<IntPtr, int, IntPtr*, byte*, BufferArg*, int>)Reader(SequenceHalf))(items, i, &held, record, &view)
                    : ((delegate* unmanaged<IntPtr, int, byte*, BufferArg*, int>)Reader(0))(items, i, record, &view);
                try
                {
                    if (status != 0) throw new PythonErrorPending();
                    result[i] = view.ToArray();
                }
                finally
                {
                    if (view.Acquired != 0) ((delegate* unmanaged<byte*, void>)buffers[BufferRelease])(record);
                    NativeCallbacks.DecRef(held);
                }
            }
            return result;
        }

        private static long Size(IntPtr container, int row)
        {
            var size = (delegate* unmanaged<IntPtr, long>)((IntPtr*)NativeCallbacks.StaticGroups[GroupContainers])[row];
            long count = size(container);
            if (count < 0) throw new PythonErrorPending();
            return count;
        }

        /// <summary>The element reader at a position of the generic table: each cell holds the function's address.</summary>
        private static IntPtr Reader(int position) => *(IntPtr*)NativeCallbacks.GenericCells[position];
    }
}
