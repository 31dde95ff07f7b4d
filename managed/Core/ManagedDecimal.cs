// The 16-byte decimal record of the wire, with its decoding, including the double form, and its encoding.
using System;
using System.Runtime.InteropServices;

namespace Orvane.WrpGen.Interop
{
    /// <summary>
    /// A decimal as the native side builds it: 96-bit magnitude (Low first), then Flags with the sign in bit 31 and
    /// the scale in bits 16 to 23, the layout of <see cref="decimal.GetBits(decimal)"/>. Flags equal to
    /// <see cref="DoubleForm"/> mean that Low and Mid hold the low and high halves of an IEEE double's bits.
    /// </summary>
    public partial struct ManagedDecimal
    {
        /// <summary>A flags word no real decimal can have: bits 0 to 15 are always zero there.</summary>
        public const uint DoubleForm = 1;

        private const uint SignBit = 0x80000000;

        /// <summary>The managed value; a double form goes through the runtime's double to decimal conversion.</summary>
        public readonly decimal ToDecimal()
        {
            if (Flags == DoubleForm)
            {
                return (decimal)BitConverter.UInt64BitsToDouble(((ulong)Mid << 32) | Low);
            }
            return new decimal((int)Low, (int)Mid, (int)High, (Flags & SignBit) != 0, (byte)(Flags >> 16));
        }

        /// <summary>The record of a managed result, for the decimal builder of the values-out group.</summary>
        public static ManagedDecimal FromDecimal(decimal value)
        {
            Span<int> bits = stackalloc int[4];
            decimal.GetBits(value, bits);
            return new ManagedDecimal { Low = (uint)bits[0], Mid = (uint)bits[1], High = (uint)bits[2], Flags = (uint)bits[3] };
        }
    }
}
