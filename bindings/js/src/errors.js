// What the functions throw.

/** A call that the library refused, or could not finish. */
export class QuorError extends Error {
  /**
   * @param {number} status  one of Status
   * @param {string} text
   */
  constructor(status, text) {
    super(text);
    this.name = 'QuorError';
    this.status = status;
  }
}

/** The numbers of quorkit.h, and one of this module. */
export const Status = Object.freeze({
  DONE: 0, BAD_ARGUMENT: 1, OUT_OF_MEMORY: 2, TOO_LARGE: 3, FILE: 4, CANCELLED: 5, INTERNAL: 6,
  UNUSABLE: 100,
});
