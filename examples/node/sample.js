// Makes a database of a package and lists its tables: node sample.js PACKAGE DATABASE
//
// It calls the C interface through koffi (npm install). The libraries are found as the system finds any; where they are
// elsewhere, TOV_SCHEMA_LIBRARIES names their folder.
'use strict';

const fs = require('node:fs');
const path = require('node:path');
const koffi = require('koffi');

const folder = process.env.TOV_SCHEMA_LIBRARIES ?? '';
const schemaLibrary = koffi.load(path.join(folder, 'libtov_schema.so.0'));
const toolsLibrary = koffi.load(path.join(folder, 'libtov_schema_tools.so.0'));

for (const name of ['KT_context', 'tov_schema', 'KT_varray'])
    koffi.opaque(name);
const c = {
    newContext: schemaLibrary.func('void KT_context__alloc(_Out_ KT_context **ctx)'),
    freeContext: schemaLibrary.func('void KT_context__free(KT_context *ctx)'),
    hasError: schemaLibrary.func('int KT_context__has_err(KT_context *ctx)'),
    errorText: schemaLibrary.func('const char *KT_context__err_description(KT_context *ctx)'),
    resetError: schemaLibrary.func('void KT_context__err_reset(KT_context *ctx)'),
    freeSchema: schemaLibrary.func('void tov_schema__nullfree(KT_context *ctx, _Inout_ tov_schema **schema)'),
    freeList: schemaLibrary.func('void KT_varray__free(KT_context *ctx, KT_varray *list)'),
    countTables: schemaLibrary.func('void tov_schema__count_tbls(KT_context *ctx, tov_schema *schema, _Out_ uint32_t *n)'),
    tableId: schemaLibrary.func(
        'void tov_schema__get_nth_tbl_id(KT_context *ctx, tov_schema *schema, uint32_t n, _Out_ const char **id)'),
    tableName: schemaLibrary.func(
        'void tov_schema__get_tbl_name(KT_context *ctx, tov_schema *schema, const char *id, _Out_ const char **name)'),
    import: toolsLibrary.func(
        'void tov_host__import(KT_context *ctx, const void *bytes, size_t size, const void *options, ' +
        '_Out_ tov_schema **schema, _Out_ KT_varray **findings)'),
    create: toolsLibrary.func(
        'void tov_client__create_database(KT_context *ctx, tov_schema *schema, const char *file, void *progress, void *data)'),
};

// Calls a function of the interface; what fails there is an exception here.
function call(context, name, ...values) {
    c[name](context, ...values);
    if (!c.hasError(context))
        return;
    const text = c.errorText(context);
    c.resetError(context);
    throw new Error(text);
}

function listTables(context, schema) {
    const count = [0];
    call(context, 'countTables', schema, count);
    for (let n = 0; n < count[0]; n++) {
        const id = [null];
        const name = [null];
        call(context, 'tableId', schema, n, id);
        call(context, 'tableName', schema, id[0], name);
        console.log(name[0]);
    }
}

function main(source, database) {
    const context = [null];
    const schema = [null];
    const findings = [null];
    c.newContext(context);
    try {
        const bytes = fs.readFileSync(source);
        call(context[0], 'import', bytes, bytes.length, null, schema, findings);
        call(context[0], 'create', schema[0], database, null, null);
        listTables(context[0], schema[0]);
    } finally {
        c.freeList(context[0], findings[0]);
        c.freeSchema(context[0], schema);
        c.freeContext(context[0]);
    }
}

try {
    main(...process.argv.slice(2));
} catch (error) {
    console.error(error.message);
    process.exitCode = 1;
}
