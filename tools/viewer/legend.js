// The legend: the ramp upright, the largest value on top, with the numbers that its colours mean.

const element = (id) => document.getElementById(id);
// How far the numbers beside the bar, and the bar, keep from the edges of the legend, in pixels.
const EDGE = 5;
// Numbers nearer to an end of the bar than this share of it would touch the number there.
const CLEAR = 0.05;

// words: {high, low}, shown in place of the numbers where they are given.
export function drawLegend(ramp, scale, words) {
  element('legend').hidden = !ramp || !scale;
  for (const tick of document.querySelectorAll('.tick')) {
    tick.remove();
  }
  if (!ramp || !scale) {
    return;
  }
  const hasWords = words.high !== null || words.low !== null;
  element('field').textContent = scale.field || (scale.isShare && !hasWords ? 'share of the range' : '');
  element('high').textContent = words.high ?? scale.format(scale.maximum);
  element('low').textContent = words.low ?? scale.format(scale.minimum);
  element('error').textContent = hasWords ? '' : scale.errorText();
  drawBar(ramp, scale.uOf(scale.maximum), scale.uOf(scale.minimum));
  if (!hasWords) {
    scale.ticks().forEach((value) => addTick(scale, value));
  }
  makeRoom();
}

// Moves the bar to the left, and makes the legend wider, as long numbers beside it need.
function makeRoom() {
  const legend = element('legend');
  legend.style.width = '';
  element('scale').style.left = '';
  const ticks = [...document.querySelectorAll('.tick')];
  const widest = Math.max(0, ...ticks.map((tick) => tick.offsetWidth));
  const bar = element('bar').offsetWidth;
  const width = Math.max(legend.offsetWidth, bar + widest + 2 * EDGE);
  legend.style.width = `${width}px`;
  // In the middle of the legend there is this much on either side of the bar.
  const side = (width - bar) / 2;
  element('scale').style.left = `${-Math.min(Math.max(widest + EDGE - side, 0), side - EDGE)}px`;
}

// The part of the ramp between these u, or the colour of one.
function drawBar(ramp, first, last) {
  const bar = element('bar');
  const context = bar.getContext('2d');
  for (let y = 0; y < bar.height; ++y) {
    const u = Math.min(Math.max(first + ((last - first) * (y + 0.5)) / bar.height, 0), 1);
    const x = Math.min(Math.floor(u * ramp.width), ramp.width - 1);
    context.drawImage(ramp, x, ramp.height / 2, 1, 1, 0, y, 1, 1);
  }
}

function addTick(scale, value) {
  const share = (scale.maximum - value) / (scale.maximum - scale.minimum);
  if (share < CLEAR || share > 1 - CLEAR) {
    return;
  }
  const tick = document.createElement('span');
  tick.className = 'tick';
  tick.style.top = `${100 * share}%`;
  tick.textContent = scale.format(value, false);
  element('scale').append(tick);
}
