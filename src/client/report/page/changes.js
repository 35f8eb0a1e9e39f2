// What has changed from an earlier schema, where the report compares two.

const changedTables = report.changes?.tables ?? [];
for (const changed of changedTables) {
    const table = tableByServerName.get(folded(changed.name)) ?? findTable(changed.name);
    changed.about = changed.change === 'removed' ? null : table;
    if (!changed.about) continue;
    table.changed = changed;
    if (changed.change === 'added') continue; // with all its columns
    for (const column of table.columns) {
        column.changed = changed.changes?.find((change) => change.kind === 'column' && change.name &&
            change.change !== 'removed' && folded(change.name) === folded(column.name));
    }
}

// A word after the name of what has changed.
function changeMark(it) {
    return it.changed ? [' ', element('span', {class: 'mark ' + it.changed.change}, it.changed.change)] : null;
}

function changeNote(change) {
    const before = change.old === undefined ? null : [' ', code(change.old)];
    const after = change.new === undefined ? null : [' ', code(change.new)];
    return element('p', {class: 'note ' + (change.change === 'changed' || change.change === 'renamed' ? 'warning' :
        change.change)}, element('b', null, change.change + ' ' + change.kind), change.name ? ' ' + change.name : '',
        change.member ? ', ' + change.member : '', change.old_name ? ', formerly ' + change.old_name : '',
        before || after ? ':' : '', before, before && after ? ' is now' : '', after,
        change.guess ? element('span', {class: 'quiet'}, ' (a guess)') : null);
}

function changesOf(table) {
    const {changed} = table;
    if (!changed) return [];
    return [changed.old_name ? element('p', {class: 'quiet'}, 'formerly ' + changed.old_name +
        (changed.guess ? ' (a guess)' : '')) : null,
        changed.change === 'added' ? [] : part('Changes', changed.changes, () => changed.changes.map(changeNote))];
}

function changesView() {
    const ofTable = (changed) => [element('h3', null,
        changed.about ? linkTo(changed.about, changed.name) : changed.name, changeMark({changed})), changed.old_name ? element('p', null, 'formerly ' + changed.old_name) : null,
        changed.change === 'added' ? [] : (changed.changes ?? []).map(changeNote)];
    const none = !changedTables.length && !report.changes.changes?.length;
    return [element('h2', {tabindex: -1}, 'Changes'), none ? element('p', null, 'There are none.') : null,
        (report.changes.changes ?? []).map(changeNote),
        changedTables.filter((changed) => !changed.about || isShown(changed.about)).map(ofTable)];
}
