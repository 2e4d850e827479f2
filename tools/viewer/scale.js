// From the texture coordinate u to values with their unit. An OBJ keeps u only; the values that it
// stands for may lie in a JSON file of the same base name beside it:
//
//   {"quor": 1, "title": "heat_sink", "field": "temperature", "unit": "°C", "minimum": 20,
//    "maximum": 100}
//
// minimum and maximum are the values at the ends of the colours. "error": 0.3 says by how much the field may
// differ from the exact one, in its unit, and "errorExcept" where that does not hold. Without the file,
// values are shares of the range, 0 to 1.

const NEWEST = 1;
// Isolines and the numbers on the legend divide the range into so many steps at most, and five at least.
const MOST_STEPS = 12.5;

// What the JSON of this name says, and notes for the user. A file that is none of ours counts as
// missing.
export async function readInfo(source, name) {
  const file = await source.read(name);
  if (!file) {
    return {info: {}, notes: []};
  }
  const refuse = (problem) => ({info: {},
    notes: [`${name} ${problem}; the legend shows shares of the range.`]});
  let info;
  try {
    info = JSON.parse(await file.text());
  } catch {
    return refuse('is damaged: it is no JSON');
  }
  if (typeof info?.quor !== 'number') {
    return {info: {}, notes: []};
  }
  for (const word of ['title', 'field', 'unit', 'errorExcept']) {
    if (typeof info[word] !== 'string') {
      delete info[word];
    }
  }
  if (info.quor > NEWEST) {
    return refuse('was written for a newer viewer');
  }
  const {minimum, maximum} = info;
  if (!Number.isFinite(minimum) || !Number.isFinite(maximum) || minimum > maximum) {
    return refuse('has no minimum and maximum');
  }
  const notes = info.errorExcept ? [`* The error does not hold ${info.errorExcept}.`] : [];
  return {info, notes};
}

export class Scale {
  title;
  field;
  unit;
  minimum;
  maximum;
  error;  // how far values may be off; 0 if nobody has said
  errorExcept;  // where they may be off by more, in words
  isShare;  // nobody has said what the ends of the colours are
  #ends;

  // ends: the least and the largest u, those of the largest and the smallest value.
  constructor(ends, {title = '', field = '', unit = '', minimum, maximum, error, errorExcept = ''}) {
    this.title = title;
    this.field = field;
    this.unit = unit;
    this.isShare = minimum === undefined;
    this.minimum = minimum ?? 0;
    this.maximum = maximum ?? 1;
    this.error = Number.isFinite(error) && error > 0 ? error : 0;
    this.errorExcept = errorExcept;
    this.#ends = ends;
  }

  valueAt(u) {
    const [first, last] = this.#ends;
    const share = last > first ? (u - first) / (last - first) : 0;
    return this.maximum + share * (this.minimum - this.maximum);
  }

  // The u of a value; where all values are equal, the only one.
  uOf(value) {
    const [first, last] = this.#ends;
    const range = this.maximum - this.minimum;
    return range > 0 ? first + ((this.maximum - value) / range) * (last - first) : first;
  }

  // The values between the ends that are round numbers, upwards.
  ticks() {
    const step = this.#step();
    const before = Math.floor(this.minimum / step);
    if (!Number.isSafeInteger(before)) {  // the range is lost in the digits of its ends
      return [];
    }
    return Array.from({length: Math.ceil(MOST_STEPS)}, (_, k) => (before + 1 + k) * step)
      .filter((value) => value < this.maximum);
  }

  // Where the ticks lie in u: (u - origin) * frequency is an integer there; ends are what that comes to
  // at the ends of the colours, drawn in by a hair. Null where there is no range.
  isolines() {
    const [tick] = this.ticks();
    const origin = tick === undefined ? NaN : this.uOf(tick);
    const frequency = 1 / (this.uOf(tick - this.#step()) - origin);
    if (!Number.isFinite(frequency)) {
      return null;
    }
    const [first, last] = this.#ends.map((u) => (u - origin) * frequency);
    return {origin, frequency, ends: [first + 0.02, last - 0.02]};
  }

  // The distance of ticks, a round number; 0 where the range is empty.
  #step() {
    const range = this.maximum - this.minimum;
    if (!(range > 0)) {
      return 0;
    }
    const power = 10 ** Math.floor(Math.log10(range / MOST_STEPS));
    return power * [1, 2, 5, 10].find((factor) => factor * power * MOST_STEPS >= range);
  }

  // How far values may be off, rounded up to two digits; '' if nobody has said.
  errorText() {
    if (!this.error) {
      return '';
    }
    const step = 10 ** (Math.floor(Math.log10(this.error)) - 1);
    const shown = Number((Math.ceil(this.error / step - 1e-9) * step).toPrecision(2));
    return `\u00b1 ${this.#withUnit(String(shown))}${this.errorExcept ? ' *' : ''}`;
  }

  // A value with as many digits as tell a thousandth of the range.
  format(value, withUnit = true) {
    const range = this.maximum - this.minimum;
    const decimals = range > 0 ? Math.max(0, Math.ceil(2.3 - Math.log10(range))) : 3;
    const number = decimals <= 6 && Math.abs(value) < 1e9
      ? String(Number(value.toFixed(decimals))) : String(Number(value.toPrecision(4)));
    return (withUnit ? this.#withUnit(number) : number).replace(/^-/, '\u2212');
  }

  #withUnit(number) {
    return this.unit ? `${number} ${this.unit}` : number;
  }
}
