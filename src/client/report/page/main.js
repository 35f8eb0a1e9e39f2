// Begins: what the page says of the whole, and the view that its address asks for.

function summary() {
    const columnCount = tables.reduce((sum, table) => sum + table.columns.length, 0);
    const referenceCount = tables.reduce((sum, table) => sum + table.references.length, 0);
    const violations = tables.reduce((sum, table) => sum + violationCount(table), 0);
    return [counted(tables.length, 'table', 'tables'), counted(columnCount, 'column', 'columns'),
        counted(referenceCount, 'reference', 'references'),
        report.findings ? counted(findings.length, 'finding', 'findings') : '',
        violations ? counted(violations, 'violation', 'violations') + ' in the rows' : '',
        report.changes ? counted(changedTables.length, 'table differs', 'tables differ') : '',
        report.collation ? 'collation ' + report.collation : ''].filter(Boolean).join(' · ');
}

document.title = report.title;
document.getElementById('title').textContent = report.title;
document.getElementById('summary').textContent = summary();
if (findings.length) document.getElementById('findings-link').textContent = 'Findings (' + findings.length + ')';
document.getElementById('changes-link').hidden = !report.changes;
offerSchemas();
startSearch();
showList();
showView();
window.addEventListener('hashchange', () => {
    if (location.hash === '#main') return; // the link that skips to the content
    showView();
    window.scrollTo(0, 0);
    document.querySelector('main h2')?.focus({preventScroll: true});
});
