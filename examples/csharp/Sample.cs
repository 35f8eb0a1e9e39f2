// Makes a database of a package and lists its tables: mono Sample.exe PACKAGE DATABASE
//
// It calls the C interface by P/Invoke. The libraries are found as the system finds any: install them, or name their
// folder in LD_LIBRARY_PATH. Strings are UTF-8 on their way in and out.
using System;
using System.IO;
using System.Runtime.InteropServices;
using System.Text;

static class Native
{
    const string Schema = "libtov_schema.so.0";
    const string Tools = "libtov_schema_tools.so.0";

    [DllImport(Schema)] public static extern void KT_context__alloc(out IntPtr context);
    [DllImport(Schema)] public static extern void KT_context__free(IntPtr context);
    [DllImport(Schema)] public static extern int KT_context__has_err(IntPtr context);
    [DllImport(Schema)] public static extern IntPtr KT_context__err_description(IntPtr context);
    [DllImport(Schema)] public static extern void KT_context__err_reset(IntPtr context);
    [DllImport(Schema)] public static extern void KT_varray__free(IntPtr context, IntPtr list);
    [DllImport(Schema)] public static extern void tov_schema__nullfree(IntPtr context, ref IntPtr schema);
    [DllImport(Schema)] public static extern void tov_schema__count_tbls(IntPtr context, IntPtr schema, out uint count);
    [DllImport(Schema)] public static extern void tov_schema__get_nth_tbl_id(
        IntPtr context, IntPtr schema, uint n, out IntPtr id);
    [DllImport(Schema)] public static extern void tov_schema__get_tbl_name(
        IntPtr context, IntPtr schema, IntPtr id, out IntPtr name);
    [DllImport(Tools)] public static extern void tov_host__import(
        IntPtr context, byte[] bytes, UIntPtr size, IntPtr options, out IntPtr schema, out IntPtr findings);
    [DllImport(Tools)] public static extern void tov_client__create_database(
        IntPtr context, IntPtr schema, byte[] file, IntPtr progress, IntPtr data);
}

static class Sample
{
    static string Text(IntPtr utf8)
    {
        int size = 0;
        while (Marshal.ReadByte(utf8, size) != 0)
            size++;
        var bytes = new byte[size];
        Marshal.Copy(utf8, bytes, 0, size);
        return Encoding.UTF8.GetString(bytes);
    }

    // What fails in a call of the interface is an exception here.
    static void Check(IntPtr context)
    {
        if (Native.KT_context__has_err(context) == 0)
            return;
        string text = Text(Native.KT_context__err_description(context));
        Native.KT_context__err_reset(context);
        throw new InvalidOperationException(text);
    }

    static void ListTables(IntPtr context, IntPtr schema)
    {
        uint count;
        Native.tov_schema__count_tbls(context, schema, out count);
        Check(context);
        for (uint n = 0; n < count; n++)
        {
            IntPtr id, name;
            Native.tov_schema__get_nth_tbl_id(context, schema, n, out id);
            Check(context);
            Native.tov_schema__get_tbl_name(context, schema, id, out name);
            Check(context);
            Console.WriteLine(Text(name));
        }
    }

    static void Run(string source, string database)
    {
        IntPtr context, schema = IntPtr.Zero, findings = IntPtr.Zero;
        byte[] bytes = File.ReadAllBytes(source);
        Native.KT_context__alloc(out context);
        try
        {
            Native.tov_host__import(context, bytes, (UIntPtr)bytes.Length, IntPtr.Zero, out schema, out findings);
            Check(context);
            Native.tov_client__create_database(context, schema, Encoding.UTF8.GetBytes(database + "\0"), IntPtr.Zero,
                                               IntPtr.Zero);
            Check(context);
            ListTables(context, schema);
        }
        finally
        {
            Native.KT_varray__free(context, findings);
            Native.tov_schema__nullfree(context, ref schema);
            Native.KT_context__free(context);
        }
    }

    static int Main(string[] arguments)
    {
        try
        {
            Run(arguments[0], arguments[1]);
            return 0;
        }
        catch (Exception error)
        {
            Console.Error.WriteLine(error.Message);
            return 1;
        }
    }
}
