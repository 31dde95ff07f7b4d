// Checks run before managed members that would end the process instead of throwing when their platform need is missing.
using System;

namespace Orvane.WrpGen.Interop
{
    public static class Preconditions
    {
        /// <summary>
        /// Screen copies open the X display named by DISPLAY; without one, System.Drawing hands a null
        /// display to Xlib, which crashes the process. Refuse with an exception instead.
        /// </summary>
        public static void RequireDisplay()
        {
            if (string.IsNullOrEmpty(Environment.GetEnvironmentVariable("DISPLAY")))
                throw new PlatformNotSupportedException("copying from the screen needs an X display, and DISPLAY is not set");
        }
    }
}
