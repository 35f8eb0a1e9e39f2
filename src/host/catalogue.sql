/*
   Exports the catalogue of a SQL Server database as one JSON document, for "tov-schema import".

   It only reads. It runs on SQL Server 2016 and later and on Azure SQL, and asks for the rights CONNECT and
   VIEW DEFINITION; without the second the server silently leaves out what the login may not see.

   With sqlcmd:
       sqlcmd -S server -d database -E -y 0 -f 65001 -b -i catalogue.sql -o catalogue.json
   where -y 0 keeps the document whole, -f 65001 writes UTF-8 and -b makes an error visible in the exit code. Leave -W
   out: it cuts blanks. In PowerShell give Invoke-Sqlcmd -MaxCharLength 2147483647 and save the column "document"; with
   bcp use queryout and -w. In a graphical tool save the one cell to a file rather than copy it out of the grid, which
   cuts long texts: Management Studio at 65,535 characters, unless its options for results in a grid say otherwise.

   To export a part of the database, change the two patterns.
*/
SET NOCOUNT ON;

DECLARE @schemas nvarchar(128) = N'%';
DECLARE @tables nvarchar(128) = N'%';

-- The document goes through a variable: a FOR JSON query that is the result itself comes in pieces of 2,033
-- characters, and tools put line ends between them.
DECLARE @document nvarchar(max) = (
    SELECT
        N'sqlserver-catalogue' AS [format],
        1 AS [format_version],
        CONVERT(nvarchar(33), SYSUTCDATETIME(), 126) AS [exported_at],
        CONVERT(nvarchar(128), SERVERPROPERTY('ProductVersion')) AS [server.product_version],
        CONVERT(int, SERVERPROPERTY('EngineEdition')) AS [server.engine_edition],
        DB_NAME() AS [database.name],
        facts.collation AS [database.collation],
        CONVERT(int, COLLATIONPROPERTY(facts.collation, 'CodePage')) AS [database.code_page],
        CONVERT(int, COLLATIONPROPERTY(facts.collation, 'ComparisonStyle')) AS [database.comparison_style],
        -- says whether what is missing below may only be hidden; the answer is NULL for a name that it cannot read
        CONVERT(bit, ISNULL(HAS_PERMS_BY_NAME(QUOTENAME(DB_NAME()), 'DATABASE', 'VIEW DEFINITION'), 0))
            AS [database.can_view_definitions],
        (
            SELECT
                tbl.object_id AS [id],
                sch.name AS [schema],
                tbl.name AS [name],
                tbl.temporal_type AS [temporal_type],
                tbl.is_memory_optimized AS [is_memory_optimized],
                tbl.is_filetable AS [is_filetable],
                tbl.is_external AS [is_external],
                graph_table.is_node AS [is_node],
                graph_table.is_edge AS [is_edge],
                (
                    SELECT SUM(part.rows)
                    FROM sys.partitions AS part
                    WHERE part.object_id = tbl.object_id AND part.index_id IN (0, 1)
                ) AS [row_count],
                (
                    SELECT CONVERT(nvarchar(4000), prop.value)
                    FROM sys.extended_properties AS prop
                    WHERE prop.class = 1 AND prop.major_id = tbl.object_id AND prop.minor_id = 0
                        AND prop.name = N'MS_Description'
                ) AS [description],

                -- Columns. The base type has the user type id that equals the system type id; CLR types have none. An
                -- alias type that the login may not see must not take its columns with it.
                (
                    SELECT
                        col.column_id AS [id],
                        col.name AS [name],
                        col.system_type_id AS [system_type_id],
                        base_type.name AS [system_type],
                        col.user_type_id AS [user_type_id],
                        own_type.name AS [user_type],
                        type_schema.name AS [user_type_schema],
                        own_type.is_user_defined AS [is_user_type],
                        own_type.is_assembly_type AS [is_assembly_type],
                        col.max_length AS [max_length],
                        col.precision AS [precision],
                        col.scale AS [scale],
                        col.collation_name AS [collation],
                        CONVERT(int, COLLATIONPROPERTY(col.collation_name, 'CodePage')) AS [code_page],
                        CONVERT(int, COLLATIONPROPERTY(col.collation_name, 'ComparisonStyle')) AS [comparison_style],
                        col.is_nullable AS [is_nullable],
                        col.is_identity AS [is_identity],
                        col.is_rowguidcol AS [is_rowguidcol],
                        col.is_computed AS [is_computed],
                        col.is_sparse AS [is_sparse],
                        col.is_column_set AS [is_column_set],
                        col.is_filestream AS [is_filestream],
                        col.is_hidden AS [is_hidden],
                        col.generated_always_type AS [generated_always_type],
                        col.encryption_type AS [encryption_type],
                        graph_col.graph_type AS [graph_type],
                        -- of type sql_variant, hence texts
                        CONVERT(nvarchar(50), numbering.seed_value) AS [identity.seed],
                        CONVERT(nvarchar(50), numbering.increment_value) AS [identity.increment],
                        CONVERT(nvarchar(50), numbering.last_value) AS [identity.last],
                        numbering.is_not_for_replication AS [identity.not_for_replication],
                        -- a constraint of the column, or an object bound to it or to its alias type
                        CASE
                            WHEN own_default.object_id IS NOT NULL THEN N'constraint'
                            WHEN col.default_object_id <> 0 THEN N'bound'
                        END AS [default.kind],
                        NULLIF(col.default_object_id, 0) AS [default.id],
                        COALESCE(own_default.name, OBJECT_NAME(NULLIF(col.default_object_id, 0))) AS [default.name],
                        COALESCE(own_default.definition, OBJECT_DEFINITION(NULLIF(col.default_object_id, 0)))
                            AS [default.definition],
                        own_default.is_system_named AS [default.is_system_named],
                        formula.definition AS [computed.definition],
                        formula.is_persisted AS [computed.is_persisted],
                        OBJECT_DEFINITION(NULLIF(col.rule_object_id, 0)) AS [rule],
                        (
                            SELECT CONVERT(nvarchar(4000), prop.value)
                            FROM sys.extended_properties AS prop
                            WHERE prop.class = 1 AND prop.major_id = col.object_id AND prop.minor_id = col.column_id
                                AND prop.name = N'MS_Description'
                        ) AS [description]
                    FROM sys.columns AS col
                    LEFT JOIN sys.types AS own_type ON own_type.user_type_id = col.user_type_id
                    LEFT JOIN sys.schemas AS type_schema ON type_schema.schema_id = own_type.schema_id
                    LEFT JOIN sys.types AS base_type ON base_type.user_type_id = col.system_type_id
                    LEFT JOIN sys.identity_columns AS numbering
                        ON numbering.object_id = col.object_id AND numbering.column_id = col.column_id
                    LEFT JOIN sys.computed_columns AS formula
                        ON formula.object_id = col.object_id AND formula.column_id = col.column_id
                    LEFT JOIN sys.default_constraints AS own_default
                        ON own_default.parent_object_id = col.object_id
                        AND own_default.parent_column_id = col.column_id
                    -- NULL on SQL Server 2016: where sys.columns has no such column, the name means that of "absent".
                    OUTER APPLY (
                        SELECT known.graph_type
                        FROM (SELECT CONVERT(int, NULL) AS graph_type) AS absent
                        CROSS APPLY (
                            SELECT graph_type
                            FROM sys.columns AS self
                            WHERE self.object_id = col.object_id AND self.column_id = col.column_id
                        ) AS known
                    ) AS graph_col
                    WHERE col.object_id = tbl.object_id
                    ORDER BY col.column_id
                    FOR JSON PATH
                ) AS [columns],

                -- The primary key, its columns in key order.
                JSON_QUERY((
                    SELECT
                        constr.name AS [name],
                        constr.is_system_named AS [is_system_named],
                        CONVERT(bit, CASE idx.type WHEN 1 THEN 1 ELSE 0 END) AS [is_clustered],
                        idx.is_disabled AS [is_disabled],
                        (
                            SELECT col.name AS [name], member.is_descending_key AS [descending]
                            FROM sys.index_columns AS member
                            JOIN sys.columns AS col
                                ON col.object_id = member.object_id AND col.column_id = member.column_id
                            WHERE member.object_id = idx.object_id AND member.index_id = idx.index_id
                                AND member.key_ordinal > 0
                            ORDER BY member.key_ordinal
                            FOR JSON PATH
                        ) AS [columns]
                    FROM sys.key_constraints AS constr
                    JOIN sys.indexes AS idx
                        ON idx.object_id = constr.parent_object_id AND idx.index_id = constr.unique_index_id
                    WHERE constr.parent_object_id = tbl.object_id AND constr.type = 'PK'
                    FOR JSON PATH, WITHOUT_ARRAY_WRAPPER
                )) AS [pk],

                -- Unique constraints and unique indexes: a foreign key may refer to either.
                (
                    SELECT
                        idx.name AS [name],
                        CASE idx.is_unique_constraint WHEN 1 THEN N'constraint' ELSE N'index' END AS [kind],
                        constr.is_system_named AS [is_system_named],
                        idx.index_id AS [index_id],
                        CONVERT(bit, CASE idx.type WHEN 1 THEN 1 ELSE 0 END) AS [is_clustered],
                        idx.is_disabled AS [is_disabled],
                        idx.filter_definition AS [filter],
                        (
                            SELECT col.name AS [name], member.is_descending_key AS [descending]
                            FROM sys.index_columns AS member
                            JOIN sys.columns AS col
                                ON col.object_id = member.object_id AND col.column_id = member.column_id
                            WHERE member.object_id = idx.object_id AND member.index_id = idx.index_id
                                AND member.key_ordinal > 0
                            ORDER BY member.key_ordinal
                            FOR JSON PATH
                        ) AS [columns],
                        (
                            SELECT col.name AS [name]
                            FROM sys.index_columns AS member
                            JOIN sys.columns AS col
                                ON col.object_id = member.object_id AND col.column_id = member.column_id
                            WHERE member.object_id = idx.object_id AND member.index_id = idx.index_id
                                AND member.is_included_column = 1
                            ORDER BY member.index_column_id
                            FOR JSON PATH
                        ) AS [included]
                    FROM sys.indexes AS idx
                    LEFT JOIN sys.key_constraints AS constr
                        ON constr.parent_object_id = idx.object_id AND constr.unique_index_id = idx.index_id
                    WHERE idx.object_id = tbl.object_id AND idx.is_unique = 1 AND idx.is_primary_key = 0
                        AND idx.is_hypothetical = 0
                    ORDER BY idx.index_id
                    FOR JSON PATH
                ) AS [uniques],

                -- Other indexes. Those of the kinds that have no order of columns name them as included ones, or not.
                (
                    SELECT
                        idx.name AS [name],
                        CASE
                            WHEN idx.type = 3 THEN N'XML'
                            WHEN idx.type = 4 THEN N'SPATIAL'
                            WHEN idx.type IN (5, 6) THEN N'COLUMNSTORE'
                            WHEN idx.type > 7 THEN idx.type_desc
                        END AS [kind],
                        CONVERT(bit, CASE idx.type WHEN 1 THEN 1 ELSE 0 END) AS [is_clustered],
                        idx.is_disabled AS [is_disabled],
                        idx.filter_definition AS [filter],
                        (
                            SELECT col.name AS [name], member.is_descending_key AS [descending]
                            FROM sys.index_columns AS member
                            JOIN sys.columns AS col
                                ON col.object_id = member.object_id AND col.column_id = member.column_id
                            WHERE member.object_id = idx.object_id AND member.index_id = idx.index_id
                                AND member.key_ordinal > 0
                            ORDER BY member.key_ordinal
                            FOR JSON PATH
                        ) AS [columns],
                        (
                            SELECT col.name AS [name]
                            FROM sys.index_columns AS member
                            JOIN sys.columns AS col
                                ON col.object_id = member.object_id AND col.column_id = member.column_id
                            WHERE member.object_id = idx.object_id AND member.index_id = idx.index_id
                                AND member.is_included_column = 1
                            ORDER BY member.index_column_id
                            FOR JSON PATH
                        ) AS [included]
                    FROM sys.indexes AS idx
                    WHERE idx.object_id = tbl.object_id AND idx.is_unique = 0 AND idx.type > 0
                        AND idx.is_hypothetical = 0
                    ORDER BY idx.name
                    FOR JSON PATH
                ) AS [indexes],

                -- Foreign keys, their columns in pairs.
                (
                    SELECT
                        fk.name AS [name],
                        fk.object_id AS [id],
                        fk.referenced_object_id AS [ref_table_id],
                        ref_schema.name AS [ref_schema],
                        ref_table.name AS [ref_table],
                        ref_key.name AS [ref_key],
                        fk.delete_referential_action_desc AS [on_delete],
                        fk.update_referential_action_desc AS [on_update],
                        fk.is_disabled AS [is_disabled],
                        fk.is_not_trusted AS [is_not_trusted],
                        fk.is_not_for_replication AS [not_for_replication],
                        fk.is_system_named AS [is_system_named],
                        (
                            SELECT own_col.name AS [column], ref_col.name AS [ref_column]
                            FROM sys.foreign_key_columns AS pair
                            JOIN sys.columns AS own_col
                                ON own_col.object_id = pair.parent_object_id
                                AND own_col.column_id = pair.parent_column_id
                            JOIN sys.columns AS ref_col
                                ON ref_col.object_id = pair.referenced_object_id
                                AND ref_col.column_id = pair.referenced_column_id
                            WHERE pair.constraint_object_id = fk.object_id
                            ORDER BY pair.constraint_column_id
                            FOR JSON PATH
                        ) AS [columns]
                    FROM sys.foreign_keys AS fk
                    JOIN sys.tables AS ref_table ON ref_table.object_id = fk.referenced_object_id
                    JOIN sys.schemas AS ref_schema ON ref_schema.schema_id = ref_table.schema_id
                    LEFT JOIN sys.indexes AS ref_key
                        ON ref_key.object_id = fk.referenced_object_id AND ref_key.index_id = fk.key_index_id
                    WHERE fk.parent_object_id = tbl.object_id
                    ORDER BY fk.name
                    FOR JSON PATH
                ) AS [fks],

                -- Checks; those declared on a column name it.
                (
                    SELECT
                        chk.name AS [name],
                        chk.is_system_named AS [is_system_named],
                        chk.definition AS [definition],
                        col.name AS [column],
                        chk.is_disabled AS [is_disabled],
                        chk.is_not_trusted AS [is_not_trusted],
                        chk.is_not_for_replication AS [not_for_replication]
                    FROM sys.check_constraints AS chk
                    LEFT JOIN sys.columns AS col
                        ON col.object_id = chk.parent_object_id AND col.column_id = chk.parent_column_id
                    WHERE chk.parent_object_id = tbl.object_id
                    ORDER BY chk.name
                    FOR JSON PATH
                ) AS [checks]
            FROM sys.tables AS tbl
            JOIN sys.schemas AS sch ON sch.schema_id = tbl.schema_id
            -- as for the columns
            OUTER APPLY (
                SELECT known.is_node, known.is_edge
                FROM (SELECT CONVERT(bit, NULL) AS is_node, CONVERT(bit, NULL) AS is_edge) AS absent
                CROSS APPLY (
                    SELECT is_node, is_edge
                    FROM sys.tables AS self
                    WHERE self.object_id = tbl.object_id
                ) AS known
            ) AS graph_table
            WHERE tbl.is_ms_shipped = 0
                AND tbl.temporal_type <> 1 -- no history tables
                AND sch.name LIKE @schemas
                AND tbl.name LIKE @tables
            ORDER BY sch.name, tbl.name
            FOR JSON PATH
        ) AS [tables],

        -- Sequences, for defaults that take their next value.
        (
            SELECT
                sch.name AS [schema],
                seq.name AS [name],
                TYPE_NAME(seq.system_type_id) AS [type],
                CONVERT(nvarchar(50), seq.start_value) AS [start],
                CONVERT(nvarchar(50), seq.increment) AS [increment]
            FROM sys.sequences AS seq
            JOIN sys.schemas AS sch ON sch.schema_id = seq.schema_id
            WHERE sch.name LIKE @schemas
            ORDER BY sch.name, seq.name
            FOR JSON PATH
        ) AS [sequences],

        -- What is there and not exported, by name.
        (
            SELECT
                CASE
                    WHEN obj.type = 'V' THEN N'views'
                    WHEN obj.type IN ('P', 'PC') THEN N'procedures'
                    WHEN obj.type IN ('TR', 'TA') THEN N'triggers'
                    WHEN obj.type = 'SN' THEN N'synonyms'
                    ELSE N'functions'
                END AS [kind],
                sch.name + N'.' + obj.name AS [name]
            FROM sys.objects AS obj
            JOIN sys.schemas AS sch ON sch.schema_id = obj.schema_id
            WHERE obj.is_ms_shipped = 0
                AND obj.type IN ('V', 'P', 'PC', 'TR', 'TA', 'SN', 'FN', 'IF', 'TF', 'FS', 'FT', 'AF')
                AND sch.name LIKE @schemas
            ORDER BY obj.type, sch.name, obj.name
            FOR JSON PATH
        ) AS [objects]
    FROM (SELECT CONVERT(nvarchar(128), DATABASEPROPERTYEX(DB_NAME(), 'Collation')) AS collation) AS facts
    FOR JSON PATH, WITHOUT_ARRAY_WRAPPER
);

SELECT @document AS [document];
