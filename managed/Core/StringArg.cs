// The string argument record: a view of a Python string's own storage in one of three widths.
using System;
using System.Runtime.InteropServices;

namespace Orvane.WrpGen.Interop
{
    public unsafe partial struct StringArg
    {
        /// <summary>Copies the viewed characters into a managed string; width 4 forms surrogate pairs.</summary>
        public string ToManaged()
        {
            if (Length < 0) return null;
            if (Length == 0) return string.Empty;
            switch (Kind)
            {
                case 1:
                    return Latin1(Data, Length);
                case 2:
                    return new string((char*)Data, 0, Length);
                case 4:
                    return Ucs4(Data, Length);
                default:
                    throw new ArgumentException("unknown string width " + Kind);
            }
        }

        private static string Latin1(void* data, int length)
        {
            return string.Create(length, (IntPtr)data, static (span, p) =>
            {
                byte* src = (byte*)p;
                for (int i = 0; i < span.Length; i++) span[i] = (char)src[i];
            });
        }

        private static string Ucs4(void* data, int length)
        {
            uint* src = (uint*)data;
            int units = length;
            for (int i = 0; i < length; i++) if (src[i] > 0xFFFF) units++;
            return string.Create(units, ((IntPtr)data, length), static (span, state) =>
            {
                uint* s = (uint*)state.Item1;
                int o = 0;
                for (int i = 0; i < state.Item2; i++)
                {
                    uint cp = s[i];
                    if (cp > 0xFFFF)
                    {
                        cp -= 0x10000;
                        span[o++] = (char)(0xD800 + (cp >> 10));
                        span[o++] = (char)(0xDC00 + (cp & 0x3FF));
                    }
                    else
                    {
                        span[o++] = (char)cp;
                    }
                }
            });
        }
    }
}
