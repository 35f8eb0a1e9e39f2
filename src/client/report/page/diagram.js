// A diagram of tables and references. It begins with one table and its neighbours, and grows where it is clicked.

const mostBoxes = 120; // more cannot be read, and take long to lay out
const mostAtOnce = 24; // neighbours that a click adds
const mostKeyLines = 4;
const box = {line: 17, title: 24, padding: 9, least: 90, most: 260, gap: 20, rankGap: 64};
const pencil = document.createElement('canvas').getContext('2d');

function widthOf(text, isBold) {
    pencil.font = (isBold ? '600 ' : '') + '13px system-ui, sans-serif';
    return pencil.measureText(text).width;
}

function cut(text, isBold) {
    let shown = text;
    while (shown.length > 1 && widthOf(shown + '…', isBold) > box.most - 2 * box.padding)
        shown = shown.slice(0, -Math.ceil(shown.length / 12));
    return shown === text || widthOf(text, isBold) <= box.most - 2 * box.padding ? text : shown + '…';
}

function keyLines(table) {
    const key = table.keys?.find((candidate) => candidate.kind === 'primary');
    const names = key ? key.columns : [];
    return names.length > mostKeyLines ? [...names.slice(0, mostKeyLines - 1), '…'] : names;
}

// The table that most others are next to: a good one to begin with.
function centralTable() {
    let best = null;
    for (const table of tables.filter(isShown)) {
        if (!best || neighboursOf(table).size > neighboursOf(best).size) best = table;
    }
    return best;
}

class Diagram {
    constructor(start) {
        this.shown = new Set();
        this.added = new Map(); // tables, each with those that were added because it was grown
        this.scale = 1;
        this.canvas = element('div', {class: 'canvas', tabindex: 0, role: 'region', 'aria-label': 'Diagram'});
        this.status = element('span', {class: 'quiet', role: 'status'});
        this.startAt(start);
    }

    startAt(start) {
        this.start = start;
        this.shown.clear();
        this.added.clear();
        if (start) {
            this.shown.add(start);
            this.grow(start);
        }
        this.draw();
    }

    hiddenNeighbours(table) {
        return [...neighboursOf(table)].filter((other) => isShown(other) && !this.shown.has(other));
    }

    grow(table) {
        const room = mostBoxes - this.shown.size;
        const others = this.hiddenNeighbours(table);
        const added = others.slice(0, Math.min(room, mostAtOnce));
        added.forEach((other) => this.shown.add(other));
        this.added.set(table, [...this.addedBy(table), ...added]);
        if (others.length && !room) this.limited = true;
    }

    // Takes away again what a table brought in, and what that brought in.
    shrink(table) {
        for (const other of this.addedBy(table)) {
            this.shrink(other);
            this.shown.delete(other);
        }
        this.added.delete(table);
    }

    addedBy(table) {
        return this.added.get(table) ?? [];
    }

    toggle(table) {
        if (this.hiddenNeighbours(table).length) this.grow(table);
        else this.shrink(table);
        this.draw(table);
    }

    growAll() {
        for (const table of [...this.shown]) this.grow(table);
        this.draw();
    }

    showWhole() {
        const wanted = tables.filter(isShown);
        const byNeighbours = [...wanted].sort((a, b) => neighboursOf(b).size - neighboursOf(a).size);
        this.start = null;
        this.added.clear();
        this.shown = new Set(byNeighbours.slice(0, mostBoxes));
        this.limited = wanted.length > mostBoxes;
        this.draw();
        this.fit();
    }

    sizeOf(table) {
        const lines = keyLines(table);
        const widths = [widthOf(cut(table.table, true), true), ...lines.map((line) => widthOf(cut(line, false), false)),
            widthOf('+ 99 neighbours', false)];
        return {width: Math.max(box.least, Math.max(...widths) + 2 * box.padding),
            height: box.title + lines.length * box.line + box.line + 6};
    }

    // One edge for all references from one table to another.
    edges() {
        const found = new Map();
        for (const table of this.shown) {
            for (const reference of table.references) {
                if (!this.shown.has(reference.target)) continue;
                const key = tables.indexOf(table) + '>' + tables.indexOf(reference.target);
                if (!found.has(key)) found.set(key, {from: table, to: reference.target, references: []});
                found.get(key).references.push(reference);
            }
        }
        return [...found.values()];
    }

    // Tables without a reference are laid out below the others, since ranks would put them into one long column.
    layOut(edges) {
        const connected = new Set(edges.flatMap((edge) => [edge.from, edge.to]));
        const graph = new dagre.graphlib.Graph();
        graph.setGraph({rankdir: 'LR', nodesep: box.gap, ranksep: box.rankGap, marginx: 30, marginy: 14});
        graph.setDefaultEdgeLabel(() => ({}));
        const nameOf = (table) => String(tables.indexOf(table));
        for (const table of connected) graph.setNode(nameOf(table), this.sizeOf(table));
        const others = edges.filter((edge) => edge.from !== edge.to);
        for (const edge of others) graph.setEdge(nameOf(edge.from), nameOf(edge.to));
        if (connected.size) dagre.layout(graph);
        const places = new Map([...connected].map((table) => [table, graph.node(nameOf(table))]));
        for (const edge of others) edge.points = graph.edge(nameOf(edge.from), nameOf(edge.to)).points;
        const drawn = connected.size ? graph.graph() : {width: 12, height: 0};
        return this.placeRest([...this.shown].filter((table) => !connected.has(table)), places, drawn);
    }

    placeRest(rest, places, drawn) {
        const across = Math.max(drawn.width, 900);
        let [x, y, rowHeight, width] = [12, drawn.height + 12, 0, drawn.width];
        for (const table of rest) {
            const size = this.sizeOf(table);
            if (x + size.width > across && x > 12) [x, y, rowHeight] = [12, y + rowHeight + box.gap, 0];
            places.set(table, {...size, x: x + size.width / 2, y: y + size.height / 2});
            x += size.width + box.gap;
            rowHeight = Math.max(rowHeight, size.height);
            width = Math.max(width, x);
        }
        return {places, width: Math.ceil(width) + 1, height: Math.ceil(rest.length ? y + rowHeight + 12 : drawn.height) + 1};
    }

    drawEdge(edge, places) {
        const said = edge.references.map((reference) => reference.from.table + ' (' + reference.columns.join(', ') +
            ') → ' + reference.target.table + (reference.to.length ? ' (' + reference.to.join(', ') + ')' : ''));
        const line = edge.points ? this.lineThrough(edge.points) : this.loopAt(places.get(edge.from));
        return drawing('path', {d: line, 'marker-end': 'url(#arrow)'}, drawing('title', null, said.join('\n')));
    }

    // A table that refers to itself.
    loopAt(place) {
        const [x, y] = [place.x + place.width / 2, place.y];
        return 'M' + x + ',' + (y - 10) + 'C' + (x + 28) + ',' + (y - 18) + ' ' + (x + 28) + ',' + (y + 18) + ' ' + x +
            ',' + (y + 10);
    }

    lineThrough([first, ...rest]) {
        let line = 'M' + first.x + ',' + first.y;
        for (let n = 0; n < rest.length - 1; n++) { // a curve through the middle of each piece
            const next = rest[n + 1], end = n === rest.length - 2 ? next : {x: (rest[n].x + next.x) / 2,
                y: (rest[n].y + next.y) / 2};
            line += 'Q' + rest[n].x + ',' + rest[n].y + ' ' + end.x + ',' + end.y;
        }
        return rest.length === 1 ? line + 'L' + rest[0].x + ',' + rest[0].y : line;
    }

    button(table, size) {
        const hidden = this.hiddenNeighbours(table).length, added = this.addedBy(table).length;
        if (!hidden && !added) return null;
        const count = counted(hidden || added, 'neighbour', 'neighbours');
        const made = drawing('g', {class: 'grow', tabindex: 0, role: 'button', 'aria-expanded': String(!hidden),
            'aria-label': (hidden ? 'Show ' : 'Hide ') + count + ' of ' + table.table},
            drawing('text', {class: 'more', x: box.padding, y: size.height - 8}, (hidden ? '+ ' : '− ') + count));
        made.addEventListener('keydown', (event) => {
            if (event.key !== 'Enter' && event.key !== ' ') return;
            event.preventDefault();
            this.toggle(table);
        });
        return made;
    }

    drawTable(table, place) {
        const size = {width: place.width, height: place.height};
        const [x, y] = [Math.round(place.x - size.width / 2), Math.round(place.y - size.height / 2)];
        const lines = keyLines(table).map((line, n) => drawing('text', {x: box.padding,
            y: box.title + 14 + n * box.line}, cut(line, false)));
        const name = drawing('a', {href: addressOf(table)},
            drawing('text', {class: 'name', x: box.padding, y: 17}, cut(table.table, true)),
            drawing('title', null, table.table));
        const node = drawing('g', {class: 'node' + (table === this.start ? ' start' : ''),
            transform: 'translate(' + x + ',' + y + ')', 'data-table': table.table},
            drawing('rect', {class: 'box', rx: 4, width: size.width, height: size.height}),
            drawing('rect', {class: 'title', x: 1.5, y: 1.5, rx: 3, width: size.width - 3, height: box.title - 1.5}),
            name, lines, this.button(table, size));
        node.addEventListener('click', (event) => {
            if (!event.target.closest('a')) this.toggle(table);
        });
        return node;
    }

    draw(focused) {
        const before = focused && this.nodeOf(focused).getBoundingClientRect();
        const edges = this.edges();
        const {places, width, height} = this.layOut(edges);
        const arrow = drawing('defs', null, drawing('marker', {id: 'arrow', viewBox: '0 0 10 10', refX: 9, refY: 5,
            markerWidth: 8, markerHeight: 8, orient: 'auto'}, drawing('path', {d: 'M0,0L10,5L0,10z'})));
        this.svg = drawing('svg', {viewBox: '0 0 ' + width + ' ' + height, role: 'group', 'aria-label':
            'Tables and references'}, arrow, edges.map((edge) => this.drawEdge(edge, places)),
            [...places].map(([table, place]) => this.drawTable(table, place)));
        this.size = {width, height};
        this.canvas.replaceChildren(this.svg);
        this.zoom(this.scale);
        this.status.textContent = counted(this.shown.size, 'table', 'tables') + (this.limited ?
            ': no more than ' + mostBoxes + ' can be read at once; choose schemas, or another table to start at' : '');
        this.limited = false;
        if (focused) this.keepInPlace(focused, before);
    }

    nodeOf(table) {
        return [...this.canvas.querySelectorAll('.node')].find((node) => node.dataset.table === table.table);
    }

    // The table that was clicked stays where it was, and has the focus.
    keepInPlace(table, before) {
        const node = this.nodeOf(table);
        const after = node.getBoundingClientRect();
        this.canvas.scrollBy(after.x - before.x, after.y - before.y);
        (node.querySelector('.grow') ?? node.querySelector('a')).focus({preventScroll: true});
    }

    showStart() {
        const node = this.start && this.nodeOf(this.start);
        if (!node) return;
        const [place, frame] = [node.getBoundingClientRect(), this.canvas.getBoundingClientRect()];
        this.canvas.scrollBy(place.x + place.width / 2 - frame.x - frame.width / 2,
            place.y + place.height / 2 - frame.y - frame.height / 2);
    }

    zoom(scale) {
        this.scale = Math.min(2, Math.max(0.1, scale));
        this.svg.setAttribute('width', Math.round(this.size.width * this.scale));
        this.svg.setAttribute('height', Math.round(this.size.height * this.scale));
    }

    fit() {
        const room = {width: this.canvas.clientWidth - 2, height: innerHeight * 0.78 - 2};
        this.zoom(Math.min(1, room.width / this.size.width, room.height / this.size.height));
    }
}

function toolButton(text, label, action) {
    const made = element('button', {type: 'button', 'aria-label': label}, text);
    made.addEventListener('click', action);
    return made;
}

function startField(drawn) {
    const names = element('datalist', {id: 'names'}, tables.map((table) => element('option', {value: table.table})));
    const field = element('input', {id: 'start', class: 'field', list: 'names', autocomplete: 'off',
        value: drawn.start?.table ?? ''});
    field.addEventListener('change', () => {
        const table = findTable(field.value.trim());
        if (table) drawn.startAt(table);
        drawn.showStart();
        field.setAttribute('aria-invalid', String(!table));
    });
    return [element('label', {for: 'start'}, 'Start at'), field, names];
}

// Only the view of its own has a field for the table to start at.
function diagram(start, isView) {
    const drawn = new Diagram(start ?? (isView ? centralTable() : null));
    const tools = [isView ? startField(drawn) : null,
        toolButton('More neighbours', null, () => drawn.growAll()),
        isView ? toolButton('Whole schema', null, () => drawn.showWhole()) : null,
        toolButton('−', 'Smaller', () => drawn.zoom(drawn.scale / 1.25)),
        toolButton('+', 'Larger', () => drawn.zoom(drawn.scale * 1.25)),
        toolButton('Fit', 'Fit into the window', () => drawn.fit())];
    requestAnimationFrame(() => drawn.showStart());
    return element('div', null, element('div', {class: 'tools'}, tools, drawn.status), drawn.canvas);
}
