-- The sample client: invented, with invented makers.
CREATE TABLE tbl_VERSION (version INTEGER NOT NULL);
INSERT INTO tbl_VERSION VALUES (12);

CREATE TABLE tbl_NAMES (Name TEXT NOT NULL, Manufacturer TEXT NOT NULL);
INSERT INTO tbl_NAMES VALUES ('Cordaviva Desk', 'Officina Cordaviva');
