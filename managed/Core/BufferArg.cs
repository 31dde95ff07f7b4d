// The byte-array argument record: a view of a Python buffer lent for the length of one call.
using System;
using System.Runtime.InteropServices;

namespace Orvane.WrpGen.Interop
{
    /// <summary>
    /// A byte[] argument. Length -1 is a null array. Data is the Python object's own memory, which may be
    /// read-only on the Python side, and is valid only until the entry returns: never keep it or a span over it.
    /// </summary>
    public unsafe partial struct BufferArg
    {
        public readonly bool IsNull => Length < 0;

        /// <summary>The lent bytes in place; empty for a null array.</summary>
        public readonly Span<byte> AsSpan() => Length < 0 ? default : new Span<byte>(Data, Length);

        /// <summary>A managed copy of the bytes, or null for a null array.</summary>
        public readonly byte[] ToArray() => Length < 0 ? null : new ReadOnlySpan<byte>(Data, Length).ToArray();
    }
}
