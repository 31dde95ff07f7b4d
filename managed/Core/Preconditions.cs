// Checks run before managed members that would end the process instead of throwing when their need is missing.
using System;
using System.Drawing;
using System.Runtime.CompilerServices;

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

        /// <summary>
        /// Refuses a null path for an iterator that has points to copy into it: the native library
        /// returns 0 for an empty iterator before it looks at the path, as System.Drawing does.
        /// </summary>
        public static void RequirePathUnlessEmpty(IntPtr iterator, IntPtr path, string name)
        {
            if (path == IntPtr.Zero && InstanceHandles.Get<System.Drawing.Drawing2D.GraphicsPathIterator>(iterator).Count != 0)
                throw new ArgumentNullException(name);
        }

        // Saved states and containers know the Graphics that made them: libgdiplus crashes when one is
        // restored or ended on another Graphics.
        private static readonly ConditionalWeakTable<object, Graphics> s_graphicsOf = new ConditionalWeakTable<object, Graphics>();

        /// <summary>Remembers which Graphics made a saved state or container.</summary>
        public static void RecordGraphics(IntPtr graphics, object stateOrContainer)
        {
            if (stateOrContainer != null)
                s_graphicsOf.AddOrUpdate(stateOrContainer, InstanceHandles.Get<Graphics>(graphics));
        }

        /// <summary>Refuses a saved state or container that another Graphics made.</summary>
        public static void RequireSameGraphics(IntPtr graphics, IntPtr stateOrContainer)
        {
            object target = InstanceHandles.Get(stateOrContainer);
            if (target == null) return;  // the managed member refuses null itself
            if (!s_graphicsOf.TryGetValue(target, out Graphics owner) || !ReferenceEquals(owner, InstanceHandles.Get(graphics)))
                throw new ArgumentException("the " + (target is System.Drawing.Drawing2D.GraphicsState ? "state" : "container")
                                            + " was saved by another Graphics");
        }
    }
}
