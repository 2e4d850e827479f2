// What the functions throw.

/** A call that the library refused, or could not finish. */
export class QuorError extends Error {
  /**
   * @param {number} status  one of Status
   * @param {string} text
   * @param {{reason?: number, argument?: string, index?: number, cause?: unknown}} [detail]
   */
  constructor(status, text, {reason = 0, argument = '', index = -1, cause} = {}) {
    super(text, cause === undefined ? undefined : {cause});
    this.name = 'QuorError';
    this.status = status;
    this.reason = reason;
    this.argument = argument;
    this.index = index;
  }
}

/** The numbers of quorkit.h, and one of this package. */
export const Status = Object.freeze({
  DONE: 0, BAD_ARGUMENT: 1, OUT_OF_MEMORY: 2, TOO_LARGE: 3, FILE: 4, CANCELLED: 5, INTERNAL: 6,
  UNUSABLE: 100,
});

/** What is wrong with a bad argument. */
export const Reason = Object.freeze({
  NULL: 1, OUT_OF_RANGE: 2, NOT_FINITE: 3, DEGENERATE: 4, NO_EDGE: 5, REPEATED_CORNER: 23,
  UNUSED_VERTEX: 24,
});

/** An error about an argument. */
export function badArgument(argument, text, index = -1, reason = 0) {
  return new QuorError(Status.BAD_ARGUMENT, `${argument}: ${text}`, {argument, index, reason});
}
