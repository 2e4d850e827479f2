// The legend: the ramp upright, the largest value on top, with the numbers that its colours mean.

const element = (id) => document.getElementById(id);
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
  element('field').textContent = scale.field;
  element('high').textContent = words.high ?? scale.format(scale.maximum);
  element('low').textContent = words.low ?? scale.format(scale.minimum);
  drawBar(ramp, scale.uOf(scale.maximum), scale.uOf(scale.minimum));
  if (words.high === null && words.low === null) {
    scale.ticks().forEach((value) => addTick(scale, value));
  }
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
