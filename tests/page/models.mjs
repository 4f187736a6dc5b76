// Files to show, small enough to be worked out by hand.

/** A box as twelve facets of ASCII STL; `without` leaves facets out. */
export function boxStl([x0, y0, z0], [x1, y1, z1], name = 'box', without = []) {
  const p = [[x0, y0, z0], [x1, y0, z0], [x1, y1, z0], [x0, y1, z0], [x0, y0, z1], [x1, y0, z1], [x1, y1, z1], [x0, y1, z1]];
  const facets = [[0, 2, 1], [0, 3, 2], [4, 5, 6], [4, 6, 7], [0, 1, 5], [0, 5, 4], [1, 2, 6], [1, 6, 5], [2, 3, 7], [2, 7, 6], [3, 0, 4], [3, 4, 7]];
  const text = facets.filter((_, i) => !without.includes(i))
    .map(f => `facet normal 0 0 0\nouter loop\n${f.map(i => `vertex ${p[i].join(' ')}\n`).join('')}endloop\nendfacet\n`);
  return `solid ${name}\n${text.join('')}endsolid ${name}\n`;
}

/** Layers as a CLI file of text: a list of [height, lines]. */
export function cli(layers, header = '') {
  const text = layers.map(([z, lines]) => `$$LAYER/${z}\n${lines.join('\n')}\n`).join('');
  return `$$HEADERSTART\n$$ASCII\n$$UNITS/1\n$$VERSION/200\n${header}$$LAYERS/${layers.length}\n$$HEADEREND\n$$GEOMETRYSTART\n${text}$$GEOMETRYEND\n`;
}
const line = (direction, points) => `$$POLYLINE/1,${direction},${points.length},${points.flat().join(',')}`;
export const outer = points => line(1, [...points, points[0]]);
export const hole = points => line(0, [...points, points[0]]);
export const open = points => line(2, points);
export const strokes = list => `$$HATCHES/3,${list.length},${list.flat(2).join(',')}`;
export const rectangle = (x0, y0, x1, y1) => [[x0, y0], [x1, y0], [x1, y1], [x0, y1]];
